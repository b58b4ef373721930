#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace integration {

// Which sets were requested and acknowledged, and hence what a restart may show: for each key the
// value acknowledged last, or one requested since. The host handles the sets of a key in the order
// of their requests; any answer may be lost. Owner: a test. Thread: one at a time.
class SetLedger {
 public:
  using Number = std::uint64_t;  // of one set

  // Required first for each key: the value of a telephone that was never set.
  void begins(const std::string& key, const std::string& value);

  Number asked(const std::string& key, const std::string& value);

  // An accepted set replaces what was kept or requested before it. The value of a refused one may
  // still be found: the store may have failed after it wrote.
  void answered(const std::string& key, Number set, bool accepted);

  [[nodiscard]] bool allows(const std::string& key, const std::string& value) const;

  // What is allowed, for messages.
  [[nodiscard]] std::string allowed(const std::string& key) const;

  // A restart has shown the value, which is kept from now on. True when its set had no answer.
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
    std::vector<Set> since;  // in the order of the requests
  };
  std::map<std::string, Entry> m_entries;
  Number m_sets = 0;
};

}  // namespace integration
