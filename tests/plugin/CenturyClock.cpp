#include "plugin/CenturyClock.h"

#include <chrono>

#include "framework/StateFolder.h"

namespace plugin {

CenturyClock::CenturyClock() : m_storage(host::storageFolder()) {
  host::setStorageFolder("");
  telephone.switchOn();
  telephone.changeZone("date-format", "1");
}

CenturyClock::~CenturyClock() {
  host::setStorageFolder(m_storage);
}

void CenturyClock::choose(const independent::Choice& choice) {
  const auto flag = [](bool on) { return std::string(on ? "true" : "false"); };
  const double hours = choice.minutesEast / 60.0;
  EXPECT_TRUE(telephone.manage("sntp-tz-offset", std::to_string(hours)));
  EXPECT_TRUE(telephone.manage("daylight-save", flag(choice.daylight)));
  EXPECT_TRUE(telephone.manage("auto-daylight-save", flag(choice.automatic)));
  EXPECT_TRUE(telephone.manage("daylight-save-minutes", std::to_string(choice.shift)));
  EXPECT_TRUE(telephone.manage("daylight-save-zone-id", std::to_string(choice.zone)));
  telephone.pass(std::chrono::milliseconds{1});
}

independent::Seconds CenturyClock::randomInstant() {
  static const independent::Seconds first = independent::secondsOf("1971-01-01T00:00:00");
  static const independent::Seconds last = independent::secondsOf("2037-12-30T23:59:59");
  return std::uniform_int_distribution<independent::Seconds>(first, last)(m_random);
}

std::string nameOf(const independent::Choice& choice) {
  return "zone " + std::to_string(choice.zone) + " at " + std::to_string(choice.minutesEast) +
         (!choice.daylight   ? ", standard"
          : choice.automatic ? ", automatic"
                             : ", put forward by hand") +
         " " + std::to_string(choice.shift);
}

}  // namespace plugin
