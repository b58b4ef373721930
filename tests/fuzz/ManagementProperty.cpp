// Management access to the real service: any bytes as key and value, in any order, with time
// passing between them. Lines of the input:
//   set KEY VALUE     get KEY     reset     pass MILLISECONDS     device KEY VALUE     restart

#include <algorithm>
#include <cstdlib>

#include "framework/ApplicationLog.h"
#include "fuzz/CheckedClock.h"
#include "fuzz/Property.h"

namespace {

constexpr std::size_t kMostSteps = 64;
constexpr long kLongestPass = 2 * 86400 * 1000;  // milliseconds; longer ones are too slow to try

// A line end separates the lines of the input, so one in a value is written as \n.
std::string withLineEnds(const std::string& text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool lineEnd = text.compare(at, 2, "\\n") == 0;
    result += lineEnd ? '\n' : text[at];
    if (lineEnd) ++at;
  }
  return result;
}

std::string valueOf(fuzz::Reader& words) {
  return withLineEnds(fuzz::expanded(words.rest()));
}

void runStep(fuzz::CheckedClock& clock, std::string_view line) {
  fuzz::Reader words(line);
  const std::string_view verb = words.word();
  if (verb == "get") return clock.get(valueOf(words));
  if (verb == "reset") return clock.reset();
  if (verb == "restart") return clock.restart();
  if (verb == "pass") {
    const long time = std::strtol(std::string(words.rest()).c_str(), nullptr, 10);
    return clock.pass(std::chrono::milliseconds(std::clamp(time, 0L, kLongestPass)));
  }
  const std::string key = withLineEnds(fuzz::expanded(words.word()));
  if (verb == "device") return clock.changeDevice(key, valueOf(words));
  clock.set(key, valueOf(words));
}

}  // namespace

void fuzz::property(std::string_view input) {
  host::ApplicationLog::instance().setLevel(6);  // no sink reads the lines, but all are formatted
  CheckedClock clock;
  Reader lines(input);
  for (std::size_t step = 0; step < kMostSteps && !lines.atEnd(); ++step)
    runStep(clock, lines.line());
  clock.get("time");
  clock.restart();
}
