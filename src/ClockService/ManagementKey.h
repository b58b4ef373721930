#pragma once

#include <array>
#include <cstddef>
#include <string>

class ClockService;

// One row of the clock's management view: a key and what the service does for it. A row that is not
// in the table does not exist. Thread: under the service's management lock.
struct ManagementKey {
  static constexpr std::size_t count = 16;

  const char* name;

  // The value as text.
  std::string (*get)(ClockService& clock);

  // Applies a value; false when it is refused. Null: not settable.
  bool (*set)(ClockService& clock, const std::string& value);

  // What follows a successful set. Null: nothing.
  void (*afterSuccess)(ClockService& clock);

  // What follows every set, refused ones too, with the requested value. Null: nothing.
  void (*always)(ClockService& clock, const std::string& value);

  static const std::array<ManagementKey, count>& table();

  // The row of this key, or null.
  static const ManagementKey* find(const std::string& key);

 private:
  static void restartNtpClient(ClockService& clock);
  static void refreshZone(ClockService& clock);
};
