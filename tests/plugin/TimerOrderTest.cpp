// The order in which an expiry is compared with the timers. Timers that could not be created all
// have id 0, so the effect of an expiry with id 0 shows which one is compared first.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "plugin/ClockOnWatchedTimers.h"
#include "support/LogCapture.h"

namespace {

using plugin::ClockOnWatchedTimers;

struct CreatedTimers {
  std::string created;               // '+' or '-' for each timer, in order of creation
  std::vector<std::string> effects;  // of id 0, without those on new timers

  friend void PrintTo(const CreatedTimers& row, std::ostream* stream) { *stream << row.created; }
};

class TimersWithoutId : public ClockOnWatchedTimers,
                        public testing::WithParamInterface<CreatedTimers> {
 protected:
  void startWith(const std::string& created) {
    refuse(created.at(0));
    timers.onCall = [this, created, timer = 0U](const std::string& call) mutable {
      if (call.rfind("create", 0) == 0 && ++timer < created.size()) refuse(created[timer]);
    };
    start();
    refuse('-');
  }
  std::vector<std::string> effectsOfIdZero() {
    std::vector<std::string> lines = expire(0);
    lines.erase(std::remove_if(lines.begin(), lines.end(), isOfANewTimer), lines.end());
    return lines;
  }

 private:
  void refuse(char mark) { timers.refuseTimers(mark == '-' ? std::optional(0) : std::nullopt); }
  static bool isOfANewTimer(const std::string& line) {
    return line.rfind("create", 0) == 0 || line.rfind("read mac-addr", 0) == 0;
  }
};

TEST_P(TimersWithoutId, TakeIdZeroForTheFirstOfThem) {
  startWith(GetParam().created);
  const support::LogCapture log(5);
  EXPECT_EQ(effectsOfIdZero(), GetParam().effects);
  EXPECT_EQ(log.has("start NTP client"), GetParam().effects.empty());
}

const std::string kStoredTime = "store FallbackDateTime=2030-06-15T22:10:05+00:00";
const std::string kTime = "time 22:10:05";
const std::string kDate = "date 15.06.2030";

INSTANTIATE_TEST_SUITE_P(
    InTheOrderOfComparison, TimersWithoutId,
    testing::Values(CreatedTimers{"------", {kStoredTime}},
                    CreatedTimers{"+-----", {"zone LOC00:00", kTime, kDate}},
                    CreatedTimers{"+--+--", {kStoredTime, kDate, kTime}},  // a set time
                    CreatedTimers{"++-+--", {"stop 2", kTime}},            // the hour
                    CreatedTimers{"++-++-", {kStoredTime, kDate}},         // a set date
                    CreatedTimers{"+++++-", {"stop 3", kDate}},            // midnight
                    CreatedTimers{"++++++", {}}));                         // the restart

}  // namespace
