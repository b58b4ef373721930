#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <optional>

#include "DataStorage.h"
#include "base/PrintableText.h"
#include "framework/DataAccess.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioDevice.h"
#include "scenario/ScenarioExpectations.h"
#include "scenario/ScenarioPaths.h"
#include "scenario/ScenarioWords.h"
#include "verbs/CallWords.h"
#include "verbs/DidYouMean.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

using Run = std::function<void(ScenarioDevice& device)>;

// Lines about the device itself; they stand before everything that needs it to be on.
void readVariant(WordReader& words, DeviceOptions& device) {
  device.variant = words.integer("N");
}

void readSoftwareType(WordReader& words, DeviceOptions& device) {
  device.softwareType = words.next("TEXT");
}

void readMac(WordReader& words, DeviceOptions& device) {
  const std::string& mac = words.next("the address");
  constexpr const char* kDigits = "0123456789abcdefABCDEF";
  if (mac.size() != 12 || mac.find_first_not_of(kDigits) != std::string::npos) {
    WordReader::fail(quotedText(mac) + " is no address; it has 12 hexadecimal digits");
  }
  device.mac = mac;
}

void readNetworkAtStart(WordReader& words, DeviceOptions& device) {
  constexpr std::array<std::string_view, 2> kStates = {"up", "down"};
  device.networkUp = words.choice("the state of the network", kStates) == "up";
}

void readAt(WordReader& words, DeviceOptions& device) {
  const std::string& text = words.next("UTC");
  const auto instant = parseInstant(text);
  if (!instant) {
    WordReader::fail(quotedText(text) + " is not an instant; write " + std::string(kInstantForms));
  }
  device.at = longInstantText(*instant);
}

struct SetupLine {
  std::string_view word;
  std::string_view usage;
  void (*read)(WordReader& words, DeviceOptions& device);
};

constexpr SetupLine kSetup[] = {
    {"variant", "variant N", readVariant},
    {"software-type", "software-type TEXT", readSoftwareType},
    {"mac", "mac 12HEX", readMac},
    {"network", "network up|down", readNetworkAtStart},
    {"at", "at UTC", readAt},
};

constexpr std::string_view kSteps[] = {"restart", "power-cut", "file", "store", "expect"};

Run runCall(const Json& request) {
  const std::string name = request["method"];
  const auto arguments = request["arguments"].get<std::vector<std::string>>();
  const RemoteMethod* const known = findRemoteMethod(name);
  const bool replies = known == nullptr || known->replies;
  return [call = callOf(name, arguments), replies](ScenarioDevice& device) {
    Method copy = call;
    if (!device.call(copy) && replies) throw ScenarioFailure("expected a reply, came none");
  };
}

Run runVerb(std::span<const std::string> words) {
  const Json request = requestOf(words);
  const Verb::Route route = findVerb(words.front())->route;
  if (route == Verb::Route::watch || request.value("follow", false)) {
    throw UsageError("a scenario cannot wait and see; write `expect event` or `expect log`");
  }
  if (route == Verb::Route::call) return runCall(request);
  return [request](ScenarioDevice& device) {
    const Json answer = device.request(request);
    if (!answer.value("ok", false)) {
      throw ScenarioFailure("expected it to be done, came a refusal: " +
                            answer.value("error", std::string()));
    }
  };
}

Run readFile(std::span<const std::string> words) {
  WordReader reader(words, "file DEVICEPATH TEXT");
  const std::string& path = reader.next("DEVICEPATH");
  requireDevicePath(path);
  const std::string& text = reader.next("TEXT");
  reader.end();
  return [path, text](ScenarioDevice& device) { device.writeFile(path, text); };
}

// What arrives from elsewhere, as a user's data do: the service is not told.
Run readStore(std::span<const std::string> words) {
  WordReader reader(words, "store KEY VALUE");
  const std::string& key = reader.next("KEY");
  const std::string& value = reader.next("VALUE");
  reader.end();
  return [key, value](ScenarioDevice& device) {
    const char* const schema = DASUtilsStrings::ClockSettingsSchema;
    if (!device.device().store().setItem(schema, key, value)) {
      throw ScenarioFailure("expected it to be stored, came a refusal of the store");
    }
  };
}

Run alone(std::span<const std::string> words, void (ScenarioDevice::*act)()) {
  if (words.size() != 1) throw UsageError(quotedText(words[1]) + " is one word too many");
  return [act](ScenarioDevice& device) { (device.*act)(); };
}

void requireKnown(const std::string& word) {
  if (findVerb(word) != nullptr) return;
  std::vector<std::string_view> names(std::begin(kSteps), std::end(kSteps));
  for (const SetupLine& line : kSetup) names.push_back(line.word);
  for (const Verb& verb : verbs()) names.push_back(verb.name);
  throw UsageError("nothing is known as " + quotedText(word) + suggestion(word, names));
}

// Reads line after line. Throws UsageError for one that is wrong.
class Parser {
 public:
  void read(int number, const std::string& line) {
    const std::vector<std::string> words = splitScenarioLine(line);
    if (words.empty() || readSetup(words)) return;
    // A file may be there before the device is on.
    if (words.front() != "file") m_started = true;
    m_scenario.steps.push_back({number, readStep(words)});
  }  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

  Scenario take() { return std::move(m_scenario); }

 private:
  bool readSetup(std::span<const std::string> words) {
    const auto line = std::find_if(std::begin(kSetup), std::end(kSetup),
                                   [&](const auto& row) { return row.word == words.front(); });
    if (line == std::end(kSetup)) return false;
    if (m_started) {
      throw UsageError(quotedText(words.front()) +
                       " is about a device that is not on yet; put it " + "before the first step");
    }
    WordReader reader(words.subspan(1), line->usage);
    line->read(reader, m_scenario.device);
    reader.end();
    return true;
  }

  static Run readStep(std::span<const std::string> words) {
    const std::string& word = words.front();
    if (word == "restart") return alone(words, &ScenarioDevice::restart);
    if (word == "power-cut") return alone(words, &ScenarioDevice::powerCut);
    if (word == "file") return readFile(words.subspan(1));
    if (word == "store") return readStore(words.subspan(1));
    if (word == "expect") return readExpectation(words.subspan(1));
    requireKnown(word);
    return runVerb(words);
  }

  Scenario m_scenario;
  bool m_started = false;
};

}  // namespace

Scenario readScenario(std::istream& text) {
  Parser parser;
  std::string line;
  for (int number = 1; std::getline(text, line); ++number) {
    try {
      parser.read(number, line);
    } catch (const UsageError& error) {
      throw ScenarioTextError(std::to_string(number) + ": " + error.what());
    }
  }
  return parser.take();
}

}  // namespace host
