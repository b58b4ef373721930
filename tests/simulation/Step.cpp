#include "simulation/Step.h"

#include "simulation/model/Texts.h"

namespace simulation {
namespace {

std::string quoted(const std::string& text) {
  std::string shown = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    shown += byte < 0x20 ? print("\\x%02x", byte) : std::string(1, c);
  }
  return shown + "\"";
}

std::string duration(std::int64_t ms) {
  const auto parts = [ms](std::int64_t unit, std::int64_t next) {
    return static_cast<int>(ms / unit % next);
  };
  return print("%lld d %02d:%02d:%02d.%03d", static_cast<long long>(ms / 86400000),
               parts(3600000, 24), parts(60000, 60), parts(1000, 60), parts(1, 1000));
}

std::string instant(std::int64_t ms) {
  return utcText(floorOf(ms, 1000)) +
         print(" and %d ms", static_cast<int>(ms - floorOf(ms, 1000) * 1000));
}

std::string numbersOf(const Step& step) {
  std::string text;
  for (const std::int64_t number : step.numbers) text += " " + std::to_string(number);
  return text;
}

std::string callOf(const Step& step) {
  std::string text = step.texts[1] + " calls " + quoted(step.texts[0]);
  for (const Argument& argument : step.arguments) {
    text += " " + argument.name + "=";
    text += argument.isText ? quoted(argument.text) : std::to_string(argument.number);
  }
  return step.texts.size() > 2 && step.texts[2] != "plain" ? text + " in codec " + step.texts[2]
                                                           : text;
}

std::string missingOf(std::int64_t bits) {
  std::string text;
  if ((bits & Missing::physical) != 0) text += ", no physical interface";
  if ((bits & Missing::management) != 0) text += ", no local management";
  if ((bits & Missing::security) != 0) text += ", no security log";
  if ((bits & Missing::store) != 0) text += ", no store";
  return text;
}

std::string restartOf(const Step& step) {
  return std::string(step.numbers[0] == 1 ? "restart in order" : "power cut") + ": variant " +
         std::to_string(step.numbers[1]) + missingOf(step.numbers[2]) + ", wall clock at " +
         instant(step.numbers[3]);
}

std::string onOff(const Step& step, const char* on, const char* off) {
  return step.numbers[0] == 1 ? on : off;
}

std::string describeManagement(const Step& step) {
  switch (step.act) {
    case Act::set:
      return "management sets " + step.texts[0] + " to " + quoted(step.texts[1]);
    case Act::get:
      return "management gets " + quoted(step.texts[0]);
    case Act::reset:
      return "management resets the user's settings";
    case Act::deviceValue:
      return "the device's " + step.texts[0] + " becomes " + quoted(step.texts[1]);
    case Act::outsideStore:
      return "somebody stores " + step.texts[0] + "=" + quoted(step.texts[1]);
    case Act::mayReset:
      return step.texts[0] + onOff(step, " is the user's", " is not the user's");
    default:
      return {};
  }
}

std::string describePeers(const Step& step) {
  switch (step.act) {
    case Act::call:
      return callOf(step);
    case Act::garbage:
      return step.texts[1] + " sends garbage " + quoted(step.texts[0]);
    case Act::callNobody:
      return callOf(step) + ", of no service";
    case Act::observe:
      return step.texts[0] + " observes";
    case Act::unobserve:
      return step.texts[0] + " stops observing";
    case Act::setTime:
      return "direct setTime" + numbersOf(step);
    case Act::setSeconds:
      return "direct setTime of seconds" + numbersOf(step);
    case Act::setDate:
      return "direct setDate" + numbersOf(step);
    case Act::saveFallback:
      return "direct setFallbackTime";
    case Act::convert:
      return "direct convertUtcStringToLocalString of " + quoted(step.texts[0]);
    default:
      return {};
  }
}

std::string describeDevice(const Step& step) {
  switch (step.act) {
    case Act::pass:
      return "time passes: " + duration(step.numbers[0]);
    case Act::next:
      return "time passes to the next timer";
    case Act::jump:
      return "the wall clock jumps to " + instant(step.numbers[0]);
    case Act::report:
      return std::string("NTP client reports ") + std::to_string(step.numbers[0]) +
             (step.numbers[1] == 1 ? ", the clock is set to it" : ", the clock is left alone");
    case Act::jack:
      return "jack event" + numbersOf(step);
    case Act::storeRefuses:
      return onOff(step, "the store refuses sets", "the store takes sets again");
    case Act::storeSilent:
      return onOff(step, "the store cannot be read", "the store can be read again");
    case Act::launchFails:
      return onOff(step, "programs cannot be started", "programs can be started again");
    case Act::lookupsFail:
      return onOff(step, "lookups of names fail", "lookups of names work again");
    case Act::service:
      return step.texts[0] + onOff(step, " appears", " is gone");
    case Act::logLevel:
      return "log level" + numbersOf(step);
    case Act::fallbackFile:
      return "the fallback file is written: " + quoted(step.texts[0]);
    case Act::idle:
      return "run, shutdown and hook switch";
    case Act::restart:
      return restartOf(step);
    default:
      return {};
  }
}

}  // namespace

std::string describe(const Step& step) {
  std::string text = describeManagement(step);
  if (text.empty()) text = describePeers(step);
  return text.empty() ? describeDevice(step) : text;
}

}  // namespace simulation
