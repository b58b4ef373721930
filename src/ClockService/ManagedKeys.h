#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

class ClockService;
class ClockServiceDataHandler;
class DSTZoneRules;
class LocalMgmtIfc;

// The sixteen management keys, as one table: how each is read and set. A key without a row does not
// exist.
// Owner: the service makes one for each call. Thread: under the service's management lock, except
// for resetFormats, whose sets take that lock.
class ManagedKeys {
 public:
  // What the keys read and change. Not owned.
  struct Parts {
    ClockService& clock;
    ClockServiceDataHandler& settings;
    const DSTZoneRules& zones;
    LocalMgmtIfc* localMgmt;  // null: the device has none
  };

  struct Row {
    const char* name;

    // The value as text.
    std::string (*get)(const Parts& parts);

    // Applies a value; false when it is refused. Null: not settable.
    bool (*set)(const Parts& parts, const std::string& value) = nullptr;

    // What follows a successful set. Null: nothing.
    void (*afterSuccess)(const Parts& parts) = nullptr;

    // What follows every set, refused ones too, with the requested value. Null: nothing.
    void (*always)(const Parts& parts, const std::string& value) = nullptr;
  };

  static constexpr std::size_t kCount = 16;
  static const std::array<Row, kCount>& rows();

  // The row of this key, exactly and case-sensitively, or null.
  static const Row* find(const std::string& key);

  explicit ManagedKeys(const Parts& parts) : m_parts(parts) {}

  // The value of the key; nullopt for an unknown key.
  [[nodiscard]] std::optional<std::string> get(const std::string& key) const;

  // Whether the value was accepted; nullopt for a key that is unknown or cannot be set.
  // Throws std::out_of_range when the text is too short for the positions that its key reads.
  [[nodiscard]] std::optional<bool> set(const std::string& key, const std::string& value) const;

  // Resets date and time format to the device's defaults, if they are the user's data. True when
  // the last one that was reset could be reported.
  [[nodiscard]] bool resetFormats() const;

  // Loads date and time format from the store again and reports each one that changed.
  void reloadFormats() const;

 private:
  Parts m_parts;
};
