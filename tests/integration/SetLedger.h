#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace integration {

// What was asked to be set and what was acknowledged, and hence what a restart may show: of each
// key the value acknowledged last, or one asked for since. The host takes the sets of a key in the
// order of their asking; the answer of any may be lost. Owner: a test. Thread: one at a time.
class SetLedger {
 public:
  using Number = std::uint64_t;  // of one set

  // Comes first for each key: the value of a telephone that was never set.
  void begins(const std::string& key, const std::string& value);

  Number asked(const std::string& key, const std::string& value);

  // Accepted, what was kept or asked for before is over. Refused, its value may still be found: the
  // store may have failed after it had written.
  void answered(const std::string& key, Number set, bool accepted);

  [[nodiscard]] bool allows(const std::string& key, const std::string& value) const;

  // For messages.
  [[nodiscard]] std::string allowed(const std::string& key) const;

  // A restart has shown the value: from now on it is what is kept. True when it was one without an
  // answer.
  bool found(const std::string& key, const std::string& value);

  [[nodiscard]] std::vector<std::string> keys() const;

 private:
  struct Set {
    Number number;
    std::string value;
    bool refused = false;
  };
  struct Entry {
    std::string kept;
    std::vector<Set> since;  // in the order of asking
  };
  std::map<std::string, Entry> m_entries;
  Number m_sets = 0;
};

}  // namespace integration
