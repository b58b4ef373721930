#include "scenario/ScenarioParser.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "DataStorage.h"
#include "base/PrintableText.h"
#include "framework/DataAccess.h"
#include "scenario/CallExpectation.h"
#include "scenario/EventExpectation.h"
#include "scenario/ScenarioDevice.h"
#include "scenario/ScenarioExpectations.h"
#include "scenario/ScenarioPaths.h"
#include "scenario/ScenarioWords.h"
#include "verbs/CheckedRequest.h"
#include "verbs/DidYouMean.h"
#include "verbs/KnownNames.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"
#include "verbs/VerbTable.h"
#include "verbs/WordReader.h"

namespace host {
namespace fs = std::filesystem;
namespace {

using Run = std::function<void(ScenarioDevice& device)>;

constexpr std::string_view kInclude = "include";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Setup lines, which come before the first step that needs the device.
void readVariant(WordReader& words, DeviceOptions& device) {
  device.variant = words.integer("N");
}

void readSoftwareType(WordReader& words, DeviceOptions& device) {
  device.softwareType = words.next("TEXT");
}

void readMac(WordReader& words, DeviceOptions& device) {
  const std::string& mac = words.next("12HEX");
  constexpr const char* kDigits = "0123456789abcdefABCDEF";
  if (mac.size() != 12 || mac.find_first_not_of(kDigits) != std::string::npos) {
    WordReader::fail(quotedText(mac) + " is not a MAC address; write 12 hexadecimal digits");
  }
  device.mac = mac;
}

void readNetworkAtStart(WordReader& words, DeviceOptions& device) {
  device.networkUp = readChoice(words, "up|down") == "up";
}

void readAt(WordReader& words, DeviceOptions& device) {
  words.require("UTC");
  const std::chrono::seconds instant(readInstant(words, "UTC").get<std::int64_t>());
  device.at = longInstantText(instant);
}

struct SetupLine {
  std::string_view name;
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

Run runVerb(std::span<const std::string> words) {
  const Verb& verb = verbOf(words);
  Json request = requestOf(verb, words);
  if (verb.route == Verb::Route::catalogue) {
    throw UsageError("a scenario cannot list names; leave out " + std::string(verb.name));
  }
  const bool answers = verb.route == Verb::Route::call || verb.route == Verb::Route::control;
  if (!answers || request.value("follow", false) || request.value("watch", false)) {
    throw UsageError(
        "a scenario cannot watch, follow or record; write `expect event` or `expect log`");
  }
  if (request.contains("plot")) {
    throw UsageError("a scenario cannot draw a plot; leave out --plot");
  }
  if (verb.route == Verb::Route::call) {
    WordReader call(words.subspan(1), "call METHOD [NAME=VALUE ...]");
    return callStep(call);
  }
  request = checkedRequest(std::move(request));
  return [request](ScenarioDevice& device) {
    const Json answer = device.request(request);
    if (!answer.value("ok", false)) {
      throw ScenarioFailure("expected success, got a refusal: " +
                            answer.value("error", std::string()));
    }
  };
}

Run readRestart(WordReader&) {
  return [](ScenarioDevice& device) { device.restart(); };
}

Run readPowerCut(WordReader&) {
  return [](ScenarioDevice& device) { device.powerCut(); };
}

Run readFile(WordReader& words) {
  const std::string path = words.next("DEVICEPATH");
  requireDevicePath(path);
  const std::string text = words.next("TEXT");
  return [path, text](ScenarioDevice& device) { device.writeFile(path, text); };
}

// Changes a setting without notifying the service, as downloaded user data do.
Run readStore(WordReader& words) {
  const std::string key = words.next("KEY");
  requireStorageKey(key);
  const std::string value = words.next("VALUE");
  return [key, value](ScenarioDevice& device) {
    const char* const schema = DASUtilsStrings::ClockSettingsSchema;
    if (!device.device().store().setItem(schema, key, value)) {
      throw ScenarioFailure("expected success, got a refusal by the store");
    }
  };
}

Run readExpect(WordReader& words) {
  return readExpectation(words.rest());
}

// The steps that are not verbs of clockctl.
struct StepLine {
  std::string_view name;
  std::string_view usage;
  Run (*read)(WordReader& words);
};

constexpr StepLine kSteps[] = {
    {"restart", "restart", readRestart},
    {"power-cut", "power-cut", readPowerCut},
    {"file", "file DEVICEPATH TEXT", readFile},
    {"store", "store KEY VALUE", readStore},
    {"expect", "expect ...", readExpect},
    {"wait", "wait event NAME [NAME=VALUE ...] within DURATION", waitForEvent},
};
static_assert(namesAreUnique(kSteps));

[[noreturn]] void failUnknown(const std::string& word) {
  std::vector<std::string_view> names = {kInclude};
  const auto add = [&](const auto& rows) {
    for (const auto& row : rows) names.push_back(row.name);
  };
  add(kSteps);
  add(kSetup);
  add(kVerbs);
  throw UsageError("unknown step " + quotedText(word) + suggestion(word, names));
}

// Reads a scenario line by line, and the files that it includes. Throws UsageError for a wrong
// line.
class Parser {
 public:
  Parser(const fs::path& file, const IncludedText& included) : m_included(included) {
    m_files.push_back({file.lexically_normal(), 0});
  }

  // REQUIRES: the text is that of the last of m_files.
  void readText(std::istream& text) {
    std::string line;
    for (int number = 1; std::getline(text, line); ++number) {
      // Some editors write a byte-order mark before the first line.
      if (number == 1 && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
      m_files.back().line = number;
      try {
        readLine(line);
      } catch (const UsageError& error) {
        throw UsageError(std::to_string(number) + ": " + error.what());
      }
    }
  }

  Scenario take() { return std::move(m_scenario); }

 private:
  struct OpenFile {
    fs::path path;
    int line;
  };

  void readLine(const std::string& line) {
    const std::vector<std::string> words = splitScenarioLine(line);
    if (words.empty() || readSetup(words)) return;
    if (words.front() == kInclude) return include(words);
    // A file may be written before the device is on.
    if (words.front() != "file") m_started = true;
    m_scenario.steps.push_back({m_files.front().line, readStep(words), includedPlace()});
  }  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

  void include(std::span<const std::string> words) {
    WordReader reader(words.subspan(1), "include FILE");
    const std::string name = reader.next("FILE");
    reader.end();
    if (name.empty() || !m_included) reader.failWithUsage("there is no file to include");
    const fs::path path = (m_files.back().path.parent_path() / name).lexically_normal();
    requireIncludable(path);
    std::istringstream text(m_included(path));
    m_files.push_back({path, 0});
    try {
      readText(text);
    } catch (const UsageError& error) {
      throw UsageError(escapedLine(path.string()) + ':' + error.what());
    }
    m_files.pop_back();
  }

  void requireIncludable(const fs::path& path) {
    const auto isPath = [&](const OpenFile& file) { return file.path == path; };
    if (std::any_of(m_files.begin(), m_files.end(), isPath)) {
      WordReader::fail(quotedText(path.string()) +
                       " includes itself, perhaps through other files; remove this line");
    }
    if (m_files.size() > kDeepestInclude) {
      WordReader::fail("files are included more than " + std::to_string(kDeepestInclude) +
                       " deep; include them from the scenario itself");
    }
    if (++m_includes > kMostIncludes) {
      WordReader::fail("more than " + std::to_string(kMostIncludes) +
                       " files are included; write a smaller scenario");
    }
  }

  std::string includedPlace() const {
    std::string place;
    for (auto file = m_files.begin() + 1; file != m_files.end(); ++file) {
      place += escapedLine(file->path.string()) + ':' + std::to_string(file->line) + ": ";
    }
    return place;
  }

  bool readSetup(std::span<const std::string> words) {
    const SetupLine* const line = rowNamed(kSetup, words.front());
    if (line == nullptr) return false;
    if (m_started) {
      throw UsageError(quotedText(words.front()) +
                       " configures the device before power-on; put it before the first step");
    }
    WordReader reader(words.subspan(1), line->usage);
    line->read(reader, m_scenario.device);
    reader.end();
    return true;
  }

  static Run readStep(std::span<const std::string> words) {
    if (const StepLine* const step = rowNamed(kSteps, words.front())) {
      WordReader reader(words.subspan(1), step->usage);
      Run run = step->read(reader);
      reader.end();
      return run;
    }
    if (findVerb(words.front()) == nullptr) failUnknown(words.front());
    return runVerb(words);
  }

  const IncludedText& m_included;
  std::vector<OpenFile> m_files;  // the scenario, and the files on the way to the current line
  std::size_t m_includes = 0;
  Scenario m_scenario;
  bool m_started = false;
};

}  // namespace

Scenario readScenario(std::istream& text, const fs::path& file, const IncludedText& included) {
  Parser parser(file, included);
  try {
    parser.readText(text);
  } catch (const UsageError& error) {
    throw ScenarioTextError(error.what());
  }
  return parser.take();
}

}  // namespace host
