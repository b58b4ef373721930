#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace integration {

// What was asked to be set and what was acknowledged, and hence what a restart may show: of each
// key the value acknowledged last, or one asked for since. Sets of a key are answered in order.
// Owner: a test. Thread: one at a time.
class SetLedger {
 public:
  void asked(const std::string& key, const std::string& value);

  // The oldest of the key's sets without an answer got one. Refused, its value may still be found:
  // the store may have failed after it had written.
  void answered(const std::string& key, bool accepted);

  [[nodiscard]] bool allows(const std::string& key, const std::string& value) const;

  // For messages.
  [[nodiscard]] std::string allowed(const std::string& key) const;

  // A restart has shown the value: from now on it is what is kept. True when it was one without an
  // answer.
  bool found(const std::string& key, const std::string& value);

  [[nodiscard]] std::vector<std::string> keys() const;

 private:
  struct Entry {
    std::optional<std::string> kept;    // none: nothing was acknowledged
    std::vector<std::string> refused;   // since
    std::vector<std::string> underWay;  // without an answer, in order
  };
  std::map<std::string, Entry> m_entries;
};

}  // namespace integration
