// Each remote method takes and returns the parameters that docs/reference/remote-protocol.md lists.

#include "RemoteMethods.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "support/Framework.h"
#include "unit/RecordingService.h"

namespace {

using Lines = std::vector<std::string>;

const std::string kUtc = "2024-03-07T04:05:06+00:00";
const std::string kQuotedUtc = " \"" + kUtc + "\"";

// The values of a request, the call that the service must receive, and the values of the reply,
// which are those of RecordingService.
struct Example {
  const char* method;
  Lines request;
  std::string call;
  Lines reply;
};

const std::vector<Example> kExamples{
    {"getTime", {}, "getTime", {"09:07"}},
    {"getTimeInts", {}, "getTime numbers", {"1", "2", "3"}},
    {"getTimeUTCStr", {kUtc}, "getTime" + kQuotedUtc, {"10:08"}},
    {"getTimeUTCStrAndInts", {kUtc}, "getTime numbers" + kQuotedUtc, {"true", "11", "12", "13"}},
    {"getTimeVal", {}, "getTimeVal", {"1800000001"}},
    {"getDisplayTimeVal", {}, "getDisplayTimeVal", {"1800003602"}},
    {"setTime", {"7", "8", "9"}, "setTime 7 8 9", {"true"}},
    {"setTimeInt", {"1800000000"}, "setTime epoch 1800000000", {}},
    {"getDate", {}, "getDate", {"07.03.24"}},
    {"getDateShort", {}, "getDateShort", {"07.03."}},
    {"getDateInts", {}, "getDate numbers", {"21", "22", "23"}},
    {"getDateUTCStr", {kUtc}, "getDate" + kQuotedUtc, {"08.04.25"}},
    {"getDateShortUTCStr", {kUtc}, "getDateShort" + kQuotedUtc, {"08.04."}},
    {"getDateUTCStrAndInts", {kUtc}, "getDate numbers" + kQuotedUtc, {"true", "31", "32", "33"}},
    {"setDate", {"7", "3", "2024"}, "setDate 7 3 2024", {"true"}},
    {"getUTCTimeTimeVal", {"1"}, "getUTCTime 1", {"1970-01-01T00:00:01+00:00"}},
    {"getUTCTimeInts", {"4", "5", "6", "7", "3", "124"}, "getUTCTime 4 5 6 7 3 124", {kUtc}},
    {"observeTimeEvents", {}, "observeTimeEvents observer", {"true"}},
    {"unobserveTimeEvents", {}, "unobserveTimeEvents observer", {"true"}},
    {"setAlarmClock", {"06:30"}, "setAlarmClock \"06:30\" observer", {"77"}},
    {"cancelAlarmClock", {"77"}, "cancelAlarmClock 77", {"true"}},
    {"setFallbackTime", {}, "setFallbackTime", {"2026-11-20T10:11:12+00:00"}},
    {"isTimeSourceSntp", {}, "isTimeSourceSntp", {"true"}},
};

// A method whose parameters the document names. Parameters are lines as in support/MethodText.h.
struct RemoteRow {
  std::string name;
  Lines request;
  std::string call;
  Lines reply;              // without parameters: the method never replies
  std::string whenMissing;  // the document's last column
};

// "`setTimeHours`, `setTimeMinutes` int" with the values 7 and 8: the type applies to all names
// since the one before it.
Lines parametersOf(const std::string& cell, const char* direction, const Lines& values) {
  Lines parameters, names;
  std::istringstream words(cell);
  for (std::string word; words >> word;) {
    if (word.front() == '`') {
      names.push_back(word.substr(1, word.find('`', 1) - 1));
      continue;
    }
    for (const std::string& name : names) {
      const std::string type = word.substr(0, word.find(','));
      const std::string& value = values.at(parameters.size());
      parameters.push_back(std::string(direction) + " " + type + " " + name + "=" + value);
    }
    names.clear();
  }
  if (parameters.size() != values.size()) throw std::runtime_error("too few parameters: " + cell);
  return parameters;
}

// "| `getTime` | request | reply | when a parameter is missing |"
RemoteRow rowOf(const std::string& documented, const Example& example) {
  std::istringstream text(documented);
  Lines cells;
  for (std::string cell; std::getline(text, cell, '|');) cells.push_back(cell);
  if (cells.at(1) != std::string(" `") + example.method + "` ")
    throw std::runtime_error(example.method + (" is documented as" + cells.at(1)));
  return {example.method, parametersOf(cells.at(2), "in", example.request), example.call,
          parametersOf(cells.at(3), "out", example.reply), cells.at(4)};
}

std::vector<RemoteRow> readProtocol() {
  std::ifstream document(REMOTE_PROTOCOL_DOCUMENT);
  std::vector<RemoteRow> rows;
  for (std::string line; std::getline(document, line) && line != "## What the methods do";)
    if (line.rfind("| `", 0) == 0) rows.push_back(rowOf(line, kExamples.at(rows.size())));
  return rows;
}

const std::vector<RemoteRow>& protocol() {
  static const std::vector<RemoteRow> rows = readProtocol();
  return rows;
}

std::string messageOf(const std::string& kind, const std::string& name, const Lines& parameters) {
  std::string message = kind + " " + name + "\n";
  for (const std::string& parameter : parameters) message += parameter + "\n";
  return message;
}

Lines replyOf(const RemoteRow& row, const Lines& parameters) {
  if (row.reply.empty()) return {};
  return {messageOf("reply", row.name, parameters)};
}

std::string withValue(const std::string& parameter, const std::string& value) {
  return parameter.substr(0, parameter.find('=') + 1) + value;
}

// "`setTimeReturn` false", "`getUTCTimeIntsStringReturn` empty", or no parameter.
Lines replyWhenMissing(const RemoteRow& row) {
  const auto value = row.whenMissing.find("` ");
  if (value == std::string::npos) return replyOf(row, {});
  const bool isEmpty = row.whenMissing.substr(value + 2) == "empty ";
  return replyOf(row, {withValue(row.reply.front(), isEmpty ? "" : "false")});
}

// The parameter with both other types, with the other direction and with another case. None of
// these counts as the parameter.
Lines distortionsOf(const std::string& parameter) {
  const std::size_t name = parameter.find(' ', 3) + 1;
  const bool isNumber = parameter.rfind("in int ", 0) == 0;
  std::string capital = parameter;
  capital[name] = static_cast<char>(capital[name] - 'a' + 'A');
  return {withValue("in bool " + parameter.substr(name), "true"),
          isNumber ? "in string " + parameter.substr(name)
                   : withValue("in int " + parameter.substr(name), "5"),
          "out" + parameter.substr(2), capital};
}

class RemoteMethodsTest : public testing::Test {
 protected:
  RemoteMethodsTest() {
    m_framework.proxy = &m_proxy;
    m_invoker.initInvoker(&m_framework);
  }

  Lines repliesTo(const std::string& name, const Lines& parameters) {
    const std::string message = messageOf("call", name, parameters);
    const support::Outcome outcome = support::request(m_invoker, &m_service, message);
    EXPECT_TRUE(outcome.deleted) << message;
    return outcome.replies;
  }

  support::Framework m_framework;
  unit::RecordingService m_service;
  ClockServiceObserverProxy m_proxy;
  ClockServiceInvoker m_invoker;
};

TEST_F(RemoteMethodsTest, EachCallsTheServiceAndReplies) {
  for (const RemoteRow& row : protocol()) {
    EXPECT_EQ(repliesTo(row.name, row.request), replyOf(row, row.reply)) << row.name;
    ASSERT_FALSE(m_service.calls.empty()) << row.name;
    EXPECT_EQ(m_service.calls.back(), row.call) << row.name;
  }
  EXPECT_EQ(m_service.calls.size(), 23U);
}

TEST_F(RemoteMethodsTest, ParametersAreFoundByNameInAnyOrder) {
  for (const RemoteRow& row : protocol()) {
    Lines backwards(row.request.rbegin(), row.request.rend());
    backwards.insert(backwards.begin(), "in int somethingElse=99");
    repliesTo(row.name, backwards);
    EXPECT_EQ(m_service.calls.back(), row.call) << row.name;
  }
}

TEST_F(RemoteMethodsTest, ServiceIsNotCalledWhenAParameterIsMissingOrDistorted) {
  for (const RemoteRow& row : protocol()) {
    for (std::size_t i = 0; i < row.request.size(); ++i) {
      Lines parameters = row.request;
      for (const std::string& distorted : distortionsOf(row.request[i])) {
        parameters[i] = distorted;
        EXPECT_EQ(repliesTo(row.name, parameters), replyWhenMissing(row)) << distorted;
      }
      parameters.erase(parameters.begin() + static_cast<std::ptrdiff_t>(i));
      EXPECT_EQ(repliesTo(row.name, parameters), replyWhenMissing(row)) << row.request[i];
    }
  }
  EXPECT_EQ(m_service.calls, Lines{});
}

TEST_F(RemoteMethodsTest, RefusalRepliesWithFalseAndZeros) {
  m_service.accepts = false;
  for (const RemoteRow& row : protocol()) {
    Lines reply = row.reply;
    for (std::string& parameter : reply) {
      if (parameter.rfind("out bool ", 0) == 0) {
        parameter = withValue(parameter, "false");
      } else if (reply.size() > 1) {
        parameter = withValue(parameter, "0");
      }
    }
    EXPECT_EQ(repliesTo(row.name, row.request), replyOf(row, reply)) << row.name;
  }
}

TEST_F(RemoteMethodsTest, EmptyTextIsAText) {
  repliesTo("getTimeUTCStr", {"in string getTimeUTCStrString="});
  repliesTo("setAlarmClock", {"in string setAlarmClockAlarmTime="});
  EXPECT_EQ(m_service.calls, (Lines{"getTime \"\"", "setAlarmClock \"\" observer"}));
}

TEST_F(RemoteMethodsTest, LookUpIsExact) {
  for (const RemoteRow& row : protocol()) {
    const RemoteMethod* const method = findRemoteMethod(row.name);
    ASSERT_NE(method, nullptr) << row.name;
    EXPECT_EQ(method->name, row.name);
    EXPECT_EQ(method->replies, !row.reply.empty()) << row.name;
    std::string capital = row.name;
    capital[0] = static_cast<char>(capital[0] - 'a' + 'A');
    for (const std::string& other : {capital, row.name + "x", row.name + '\0'})
      EXPECT_EQ(findRemoteMethod(other), nullptr) << other;
  }
}

}  // namespace
