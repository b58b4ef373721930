// A year of full hours and midnights, with both changes of daylight saving.
#include <algorithm>

#include "acceptance/Acceptance.h"

namespace {

using conformance::instantOf;
using conformance::setClock;
using std::chrono::hours;
using std::chrono::seconds;

constexpr int kHours = 365 * 24;

class YearAcceptance : public conformance::Acceptance {
 protected:
  // Central Europe, ten seconds before the year begins there.
  void startTheYear() {
    telephone();
    setClock(instantOf("2025-12-31T22:59:50"));
    manage({{"daylight-save-minutes", "60"},
            {"daylight-save-zone-id", "9"},
            {"auto-daylight-save", "true"},
            {"daylight-save", "true"},
            {"sntp-tz-offset", "1"}});
    telephone().takeEvents();
  }
};

std::string hourEvent(int hour) {
  return "call timeChangeEvent timeChangeEventHours=" + std::to_string(hour) +
         " timeChangeEventMinutes=0 timeChangeEventSeconds=0";
}

TEST_F(YearAcceptance, EachHourIsAnnouncedOnce) {
  startTheYear();
  std::vector<std::string> expected;
  for (int hour = 0; hour < kHours; ++hour) {
    const std::int64_t instant = instantOf("2025-12-31T23:00:00") + hour * 3600LL;
    const bool daylight =
        instant >= instantOf("2026-03-29T01:00:00") && instant < instantOf("2026-10-25T01:00:00");
    expected.push_back(hourEvent(static_cast<int>((instant / 3600 + (daylight ? 2 : 1)) % 24)));
  }
  std::vector<std::string> announced;
  for (int hour = 0; hour < kHours; ++hour) {
    pass(hour == 0 ? seconds{10} : hours{1});
    for (const std::string& event : telephone().takeEvents())
      if (event.find("timeChangeEvent ") != std::string::npos) announced.push_back(event);
  }
  EXPECT_EQ(announced, expected);
}

TEST_F(YearAcceptance, EachDateIsAnnouncedOnce) {
  startTheYear();
  std::vector<std::string> expected;
  for (int day = 0; day < 365; ++day) {
    const auto noon = static_cast<time_t>(instantOf("2026-01-01T12:00:00") + day * 86'400LL);
    tm date{};
    gmtime_r(&noon, &date);
    expected.push_back("call dateChangeEvent dateChangeEventDay=" + std::to_string(date.tm_mday) +
                       " dateChangeEventMonth=" + std::to_string(date.tm_mon + 1) +
                       " dateChangeEventYear=" + std::to_string(date.tm_year + 1900));
  }
  pass(hours{kHours});
  std::vector<std::string> events = telephone().takeEvents();
  events.erase(std::remove_if(events.begin(), events.end(),
                              [](const std::string& event) {
                                return event.find("dateChangeEvent ") == std::string::npos;
                              }),
               events.end());
  EXPECT_EQ(events, expected);
}

}  // namespace
