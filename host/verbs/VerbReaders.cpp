#include "verbs/VerbReaders.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "base/PrintableText.h"
#include "verbs/CallWords.h"
#include "verbs/Landmarks.h"
#include "verbs/TimeText.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

// JSON carries UTF-8 and nothing else, and so do the values behind it.
const std::string& text(WordReader& words, std::string_view what) {
  const std::string& word = words.next(what);
  try {
    static_cast<void>(Json(word).dump());
  } catch (const Json::type_error&) {
    WordReader::fail(std::string(what) + " must be UTF-8 text");
  }
  return word;
}

void readSpeed(WordReader& words, Json& request) {
  const std::string& word = words.next("X");
  if (!parseSpeed(word)) {
    WordReader::fail("clock speed: " + quotedText(word) + " is not a speed; write " +
                     std::string(kSpeedForms));
  }
  request["speed"] = word;
}

void readAdvance(WordReader& words, Json& request) {
  const std::string word = words.restAsText();
  const auto duration = parseDuration(word);
  if (!duration) {
    WordReader::fail("clock advance: " + quotedText(word) + " is not a duration; write " +
                     std::string(kDurationForms));
  }
  request["seconds"] = duration->count();
}

void readJump(WordReader& words, Json& request) {
  const std::string word = words.restAsText();
  const auto instant = parseInstant(word);
  if (!instant) {
    WordReader::fail("clock jump: " + quotedText(word) + " is not an instant; write " +
                     std::string(kInstantForms));
  }
  request["seconds"] = instant->count();
}

void readLandmark(WordReader& words, Json& request) {
  std::vector<std::string_view> names;
  for (const LandmarkName& row : landmarkNames()) names.push_back(row.name);
  request["landmark"] = words.choice("the place to go to", names);
}

void readPlug(WordReader& words, Json& request) {
  request["plug"] = words.integer("PLUG");
  request["status"] = words.integer("STATUS");
}

void readNetwork(WordReader& words, Json& request) {
  constexpr std::array<std::string_view, 2> kStates = {"up", "down"};
  request["value"] = words.choice("the state of the network", kStates);
}

void readValue(WordReader& words, Json& request) {
  request["value"] = text(words, "VALUE");
}

void readDeviceValue(WordReader& words, Json& request) {
  request["key"] = text(words, "KEY");
  request["value"] = text(words, "TEXT");
}

void readUserData(WordReader& words, Json& request) {
  constexpr std::array<std::string_view, 2> kAnswers = {"on", "off"};
  request["key"] = text(words, "KEY");
  request["value"] = words.choice("what the query answers", kAnswers);
}

// The second word of `clock` and `inject`, and what follows it.
struct Action {
  std::string_view name;
  void (*read)(WordReader& words, Json& request);
};

constexpr std::array kClockActions = {
    Action{"show", readNothing},    Action{"speed", readSpeed},  Action{"pause", readNothing},
    Action{"advance", readAdvance}, Action{"next", readNothing}, Action{"jump", readJump},
    Action{"to", readLandmark},
};

constexpr std::array kInjections = {
    Action{"jack", readPlug},          Action{"network", readNetwork},
    Action{"dhcp", readValue},         Action{"mobility", readValue},
    Action{"user-data", readUserData}, Action{"value", readDeviceValue},
};

template <std::size_t N>
void readAction(WordReader& words, Json& request, const char* member, std::string_view what,
                const std::array<Action, N>& actions) {
  std::array<std::string_view, N> names;
  std::transform(actions.begin(), actions.end(), names.begin(),
                 [](const Action& action) { return action.name; });
  const std::string& name = words.choice(what, names);
  request[member] = name;
  for (const Action& action : actions) {
    if (action.name == name) action.read(words, request);
  }
}

}  // namespace

void readNothing(WordReader&, Json&) {}

void readCall(WordReader& words, Json& request) {
  request["method"] = text(words, "METHOD");
  request["arguments"] = Json::array();
  while (!words.done()) {
    const std::string& argument = text(words, "NAME=VALUE");
    static_cast<void>(parseArgument(argument));
    request["arguments"].push_back(argument);
  }
}

void readKey(WordReader& words, Json& request) {
  request["key"] = text(words, "KEY");
}

void readKeyAndValue(WordReader& words, Json& request) {
  readKey(words, request);
  readValue(words, request);
}

void readWatch(WordReader& words, Json& request) {
  request["count"] = 0;
  if (!words.accept("--count")) return;
  const int count = words.integer("N");
  if (count < 1) WordReader::fail("N is the number of events to wait for, 1 or more");
  request["count"] = count;
}

void readClock(WordReader& words, Json& request) {
  if (words.done()) {
    request["action"] = "show";
    return;
  }
  readAction(words, request, "action", "what to do with the clock", kClockActions);
}

void readInject(WordReader& words, Json& request) {
  readAction(words, request, "what", "what is to happen", kInjections);
}

void readLog(WordReader& words, Json& request) {
  request["follow"] = words.accept("--follow");
}

}  // namespace host
