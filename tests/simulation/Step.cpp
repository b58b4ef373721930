#include "simulation/Step.h"

#include <cstddef>

#include "simulation/Texts.h"

namespace simulation {
namespace {

// One name for each Act, in the same order.
const Lines kNames = words(
    "time passes, in ms:|time passes to the next timer|the wall clock jumps to|management sets|"
    "management gets|management resets the user's formats|the device's value becomes|"
    "another program stores|queries|an invalid call:|observes:|stops observing:|setTime by|"
    "setDate by|setTime of seconds by|setFallbackTime by|NTP client reports|jack event|"
    "store refuses sets:|store cannot be read:|programs cannot be started:|"
    "lookups of names fail:|service is present:|may be reset:|log level|"
    "the fallback file is written:|run, shutdown and hook switch|"
    "restart: in order, variant, missing services, wall time, TZ");

std::string quoted(const std::string& text) {
  std::string shown = " \"";
  for (const char c : text)
    shown += c >= 0 && c < ' ' ? print("\\x%02x", static_cast<unsigned int>(c)) : std::string(1, c);
  return shown + "\"";
}

}  // namespace

std::string describe(const Step& step) {
  std::string text = kNames[static_cast<std::size_t>(step.act)];
  for (const std::string& word : step.texts) text += quoted(word);
  for (const std::int64_t number : step.numbers) text += " " + std::to_string(number);
  const bool wall = step.act == Act::jump || step.act == Act::restart;
  return wall ? text + " (" + utcText(floorSeconds(step.numbers.back())) + ")" : text;
}

}  // namespace simulation
