#include "scenario/ScenarioExpectations.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "base/PrintableText.h"
#include "scenario/CallExpectation.h"
#include "scenario/EventExpectation.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioDevice.h"
#include "scenario/ScenarioPaths.h"
#include "services/LocalManagement.h"
#include "verbs/DidYouMean.h"
#include "verbs/KnownNames.h"
#include "verbs/NamedRows.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

using Run = std::function<void(ScenarioDevice& device)>;

// Not clipped: the expected text and the one received may differ at their ends.
std::string quoted(const std::string& text) {
  return '"' + text + '"';
}

[[noreturn]] void fail(const std::string& expected, const std::string& got) {
  throw ScenarioFailure("expected " + expected + ", got " + got);
}

void requireEqual(const std::string& what, const std::string& expected, const std::string& got) {
  if (got != expected) fail(what + ' ' + quoted(expected), quoted(got));
}

Run expectGet(WordReader& words) {
  const std::string key = words.next("KEY");
  requireManagementKey(key);
  const std::string value = words.next("VALUE");
  return [key, value](ScenarioDevice& device) {
    const Json answer = device.request({{"verb", "get"}, {"key", key}});
    if (!answer.value("ok", false)) fail(quoted(value), answer.value("error", std::string()));
    requireEqual(key, value, answer.value("value", std::string()));
  };
}

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Run expectFile(WordReader& words) {
  const std::string path = words.next("DEVICEPATH");
  requireDevicePathOrStorageName(path);
  const std::string text = words.next("TEXT");
  return [path, text](ScenarioDevice& device) {
    device.powerOn();
    const std::filesystem::path file = device.fileOf(path);
    if (!std::filesystem::exists(file)) fail("a file " + path, "none");
    requireEqual("a file " + path + " with", text, contentOf(file));
  };
}

Run expectNoFile(WordReader& words) {
  const std::string path = words.next("DEVICEPATH");
  requireDevicePathOrStorageName(path);
  return [path](ScenarioDevice& device) {
    device.powerOn();
    if (std::filesystem::exists(device.fileOf(path))) fail("no file " + path, "one");
  };
}

Run expectZone(WordReader& words) {
  const std::string text = words.next("TEXT");
  return [text](ScenarioDevice& device) {
    device.powerOn();
    const char* const zone = std::getenv("TZ");
    requireEqual("TZ", text, zone == nullptr ? "" : zone);
  };
}

Run expectRefused(WordReader& words) {
  words.require("VERB");
  const auto rest = words.rest();
  const Verb& verb = verbOf(rest);
  const Json request = requestOf(verb, rest);
  if (verb.route != Verb::Route::call && verb.route != Verb::Route::control) {
    WordReader::fail(std::string(verb.name) +
                     " cannot be refused; name another verb, or write `expect no event`");
  }
  if (verb.route == Verb::Route::call) {
    WordReader call(rest.subspan(1), "refused call METHOD [NAME=VALUE ...]");
    return expectNoReply(call);
  }
  requireKnownKey(request);
  return [request](ScenarioDevice& device) {
    if (device.request(request).value("ok", false)) fail("a refusal", "success");
  };
}

Run expectReport(WordReader& words) {
  const std::string key = words.next("KEY");
  requireManagementKey(key);
  const std::string wanted = key + ' ' + words.next("VALUE");
  return [wanted](ScenarioDevice& device) {
    const auto isWanted = [&](const std::string& report) { return report == wanted; };
    if (!device.reports().skipTo(isWanted)) {
      fail("a report of " + wanted, listed(device.reports().all()));
    }
  };
}

Run expectNoReport(WordReader&) {
  return [](ScenarioDevice& device) {
    const auto reports = device.reports().all();
    if (!reports.empty()) fail("no report", listed(reports));
  };
}

Run expectState(WordReader& words) {
  const std::string key = words.next("KEY");
  requireManagementKey(key);
  const int state = words.integer("N");
  return [key, state](ScenarioDevice& device) {
    const int got = device.device().management().itemState(key);
    requireEqual("the item state of " + key, std::to_string(state), std::to_string(got));
  };
}

// A value of the device itself, such as "last-restart-date".
Run expectValue(WordReader& words) {
  const std::string key = words.next("KEY");
  requireDeviceValue(key);
  const std::string value = words.next("TEXT");
  return [key, value](ScenarioDevice& device) {
    const auto got = device.device().management().value(key);
    if (!got) fail(key + ' ' + quoted(value), "no such value");
    requireEqual(key, value, *got);
  };
}

Run expectLog(WordReader& words) {
  words.require("TEXT");
  const std::string text = words.restAsText();
  if (text.empty()) words.failWithUsage("TEXT is missing");  // every line contains the empty text
  return [text](ScenarioDevice& device) {
    const auto isWanted = [&](const std::string& line) {
      return line.find(text) != std::string::npos;
    };
    if (!device.logTexts().skipTo(isWanted)) {
      fail("a log line with " + quoted(text), listed(device.logTexts().all()));
    }
  };
}

struct Expectation {
  std::string_view name;   // one or two words
  std::string_view usage;  // after `expect`
  Run (*read)(WordReader& words);
};

constexpr Expectation kExpectations[] = {
    {"call", "call METHOD [NAME=VALUE ...]", expectCall},
    {"false call", "false call METHOD [NAME=VALUE ...]", expectFalseCall},
    {"get", "get KEY VALUE", expectGet},
    {"event", "event NAME [NAME=VALUE ...]", expectEvent},
    {"next event", "next event NAME [NAME=VALUE ...]", expectNextEvent},
    {"no event", "no event [NAME [NAME=VALUE ...]]", expectNoEvent},
    {"file", "file DEVICEPATH TEXT", expectFile},
    {"no file", "no file DEVICEPATH", expectNoFile},
    {"tz", "tz TEXT", expectZone},
    {"refused", "refused VERB ...", expectRefused},
    {"report", "report KEY VALUE", expectReport},
    {"no report", "no report", expectNoReport},
    {"state", "state KEY N", expectState},
    {"value", "value KEY TEXT", expectValue},
    {"log", "log TEXT", expectLog},
};
static_assert(namesAreUnique(kExpectations));

}  // namespace

Run readExpectation(std::span<const std::string> words) {
  if (words.empty()) throw UsageError("the expectation is missing, as in `expect get KEY VALUE`");
  constexpr std::array kFirstOfTwo = {"no", "next", "false"};
  const bool two = words.size() > 1 && std::find(kFirstOfTwo.begin(), kFirstOfTwo.end(),
                                                 words.front()) != kFirstOfTwo.end();
  const std::string name = two ? words[0] + ' ' + words[1] : words.front();
  const Expectation* const row = rowNamed(kExpectations, name);
  if (row == nullptr) {
    throw UsageError(quotedText(name) + " cannot be expected" +
                     suggestion(name, namesOf(kExpectations)));
  }
  WordReader reader(words.subspan(two ? 2 : 1), row->usage);
  Run run = row->read(reader);
  reader.end();
  return run;
}

}  // namespace host
