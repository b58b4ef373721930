#pragma once

#include <map>
#include <string>

#include "support/Telephone.h"

namespace fuzz {

// The clock service as management sees it. Each set checks the contract of its key: an accepted
// value is in effect and stored, a refused one changes nothing.
// Failure: Broken.
class CheckedClock {
 public:
  CheckedClock();

  void set(const std::string& key, const std::string& value);
  void get(const std::string& key);
  void reset();
  void pass(std::chrono::milliseconds time) { m_telephone.pass(time); }
  void changeDevice(const std::string& key, const std::string& value);

  // Switches off and on again: every setting must keep its value.
  void restart();

 private:
  using Texts = std::map<std::string, std::string>;

  void holdRecord(const std::string& key, const std::string& value, bool accepted,
                  std::size_t before);
  void holdValue(const std::string& key, const std::string& value);
  void holdTimeOfDay(const std::string& value);
  void holdItemState(const std::string& server);
  void holdReadings();
  [[nodiscard]] Texts settings();  // values in memory by management key, stored ones by storage key

  support::Telephone m_telephone;
};

}  // namespace fuzz
