#include "base/InstantText.h"

#include <ctime>

namespace host {

std::string instantText(std::chrono::seconds sinceEpoch) {
  const auto instant = static_cast<time_t>(sinceEpoch.count());
  tm utc{};
  gmtime_r(&instant, &utc);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

std::chrono::seconds offsetAt(std::chrono::seconds sinceEpoch) {
  const auto instant = static_cast<time_t>(sinceEpoch.count());
  tm local{};
  localtime_r(&instant, &local);
  return std::chrono::seconds(local.tm_gmtoff);
}

}  // namespace host
