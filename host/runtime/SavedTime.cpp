#include "runtime/SavedTime.h"

#include <ctime>

#include "ClockUtils.h"
#include "base/PrintableText.h"

namespace host {
namespace {

constexpr std::time_t kFirst = 1'466'035'200;  // 2016-06-16T00:00:00Z
constexpr std::time_t kEnd = 2'145'916'800;    // 2038-01-01T00:00:00Z

}  // namespace

std::optional<std::string> oddSavedTime(const std::string& saved) {
  const std::string what = "the saved time " + quotedText(saved);
  constexpr const char* kAdvice = "; start with --at UTC to set another";
  tm utc{};
  if (!ClockUtils::convertTimeStringToTimeStruct(saved, utc)) {
    return what + " is not a UTC string, so the clock does not start from it" + kAdvice;
  }
  const std::time_t instant = timegm(&utc);
  if (instant >= kFirst && instant < kEnd) return std::nullopt;
  return what + " is not between 2016-06-16 and 2037-12-31, and the clock starts from it" + kAdvice;
}

}  // namespace host
