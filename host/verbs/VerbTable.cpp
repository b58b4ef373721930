#include <array>
#include <nlohmann/json.hpp>

#include "base/PrintableText.h"
#include "verbs/DidYouMean.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"
#include "verbs/VerbPrinters.h"
#include "verbs/VerbReaders.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

using Route = Verb::Route;

// The whole command line of clockctl, and the words of a scenario.
constexpr Verb kVerbs[] = {
    {"call", "call METHOD [NAME=VALUE ...]",
     "call a method of the service; NAME:int=VALUE or NAME:string=VALUE sets the type", Route::call,
     readCall, printCall},
    {"get", "get KEY", "read a management value", Route::control, readKey, printValue},
    {"set", "set KEY VALUE", "write a management value", Route::control, readKeyAndValue,
     printNothing},
    {"reset", "reset", "restore the device's default date and time formats", Route::control,
     readNothing, printNothing},
    {"keys", "keys", "list the management keys and their values", Route::control, readNothing,
     printKeys},
    {"watch", "watch [--count N]", "print the service's events as they arrive", Route::watch,
     readWatch, printEvent},
    {"clock",
     "clock [show | speed X | pause | advance DURATION | next | jump UTC | "
     "to hour|midnight|dst|leap-day|2038]",
     "show or control the clock", Route::control, readClock, printClock},
    {"inject",
     "inject jack PLUG STATUS | network up|down | dhcp VALUE | mobility VALUE | "
     "user-data KEY on|off | value KEY TEXT",
     "simulate an event or a changed value of the device", Route::control, readInject,
     printNothing},
    {"status", "status", "show the host's state", Route::control, readNothing, printStatus},
    {"log", "log [--follow]", "show the application log", Route::control, readLog, printLog},
    {"security-log", "security-log",
     "list who changed or tried to change what; a power loss may lose the latest records",
     Route::control, readNothing, printSecurityLog},
};

constexpr auto kVerbNames = [] {
  std::array<std::string_view, std::size(kVerbs)> names{};
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = kVerbs[i].name;
  return names;
}();

}  // namespace

std::span<const Verb> verbs() {
  return kVerbs;
}

const Verb* findVerb(std::string_view name) {
  for (const Verb& verb : kVerbs) {
    if (verb.name == name) return &verb;
  }
  return nullptr;
}

Json requestOf(std::span<const std::string> words) {
  if (words.empty()) throw UsageError("a verb is missing; `clockctl --help` lists them");
  const Verb* const verb = findVerb(words.front());
  if (verb == nullptr) {
    throw UsageError("unknown verb " + quotedText(words.front()) +
                     suggestion(words.front(), kVerbNames, "; `clockctl --help` lists the verbs"));
  }
  Json request;
  request["verb"] = verb->name;
  WordReader reader(words.subspan(1), verb->usage);
  verb->read(reader, request);
  reader.end();
  return request;
}

std::string verbHelp() {
  std::string help;
  for (const Verb& verb : kVerbs) {
    help += "  " + std::string(verb.usage) + "\n      " + std::string(verb.help) + '\n';
  }
  return help;
}

}  // namespace host
