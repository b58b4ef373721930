#pragma once

#include <map>
#include <string>

#include "plugin/Telephone.h"

namespace fuzz {

// The clock service as management sees it, held to its keys' contract with every set: what is
// accepted is what was asked for and is stored, what is refused changes nothing.
// Failure: Broken.
class ManagedClock {
 public:
  ManagedClock();

  void set(const std::string& key, const std::string& value);
  void get(const std::string& key);
  void reset();
  void pass(std::chrono::milliseconds time) { m_telephone.pass(time); }
  void changeDevice(const std::string& key, const std::string& value);

  // Off and on again: every setting is what it was.
  void restart();

 private:
  using Texts = std::map<std::string, std::string>;

  void holdRecord(const std::string& key, const std::string& value, bool accepted,
                  std::size_t before);
  void holdValue(const std::string& key, const std::string& value);
  void holdTimeOfDay(const std::string& value);
  void holdItemState(const std::string& server);
  void holdReadings();
  [[nodiscard]] Texts settings();  // in memory by their keys, in the store by its own

  plugin::Telephone m_telephone;
};

}  // namespace fuzz
