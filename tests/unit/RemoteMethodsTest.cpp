#include "RemoteMethods.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "support/Framework.h"
#include "unit/RecordingService.h"
#include "unit/RemoteProtocol.h"

namespace {

using support::Outcome;
using unit::Lines;
using unit::Missing;
using unit::remoteProtocol;
using unit::RemoteRow;

std::string messageOf(const std::string& kind, const std::string& name, const Lines& parameters) {
  std::string message = kind + " " + name + "\n";
  for (const std::string& parameter : parameters) message += parameter + "\n";
  return message;
}

Lines repliesWhenMissing(const RemoteRow& row) {
  if (row.missing == Missing::noReply) return {};
  if (row.missing == Missing::emptyReply) return {messageOf("reply", row.name, {})};
  return {messageOf("reply", row.name, {row.missingReply})};
}

// The same parameter with another type: an int as text, a text as an int, and both as a bool.
Lines withOtherTypes(const std::string& parameter) {
  const std::string assigned = parameter.substr(parameter.find(' ', 3) + 1);
  const std::string name = assigned.substr(0, assigned.find('='));
  Lines others{"in bool " + name + "=true"};
  others.push_back(parameter.rfind("in int ", 0) == 0 ? "in string " + assigned
                                                      : "in int " + name + "=5");
  return others;
}

class RemoteMethodsTest : public testing::Test {
 protected:
  RemoteMethodsTest() {
    m_framework.proxy = &m_proxy;
    m_invoker.initInvoker(&m_framework);
  }

  Outcome send(const std::string& name, const Lines& parameters) {
    const std::string message = messageOf("call", name, parameters);
    Outcome outcome = support::request(m_invoker, &m_service, message);
    EXPECT_TRUE(outcome.deleted) << message;
    return outcome;
  }

  void expectMissing(const RemoteRow& row, const Lines& parameters) {
    const std::size_t before = m_service.calls().size();
    EXPECT_EQ(send(row.name, parameters).replies, repliesWhenMissing(row))
        << messageOf("call", row.name, parameters);
    EXPECT_EQ(m_service.calls().size(), before) << messageOf("call", row.name, parameters);
  }

  support::Framework m_framework;
  unit::RecordingService m_service;
  ClockServiceObserverProxy m_proxy;
  ClockServiceInvoker m_invoker;
};

TEST_F(RemoteMethodsTest, ThereAreTwentyThree) {
  EXPECT_EQ(remoteProtocol().size(), 23U);
}

TEST_F(RemoteMethodsTest, EachCallsTheServiceAndReplies) {
  for (const RemoteRow& row : remoteProtocol()) {
    const Outcome outcome = send(row.name, row.request);
    ASSERT_FALSE(m_service.calls().empty()) << row.name;
    EXPECT_EQ(m_service.calls().back(), row.call) << row.name;
    const Lines expected =
        row.missing == Missing::noReply ? Lines{} : Lines{messageOf("reply", row.name, row.reply)};
    EXPECT_EQ(outcome.replies, expected) << row.name;
  }
  EXPECT_EQ(m_service.calls().size(), remoteProtocol().size());
}

TEST_F(RemoteMethodsTest, ParametersAreFoundByNameInAnyOrder) {
  for (const RemoteRow& row : remoteProtocol()) {
    Lines backwards(row.request.rbegin(), row.request.rend());
    backwards.insert(backwards.begin(), "in int somethingElse=99");
    send(row.name, backwards);
    EXPECT_EQ(m_service.calls().back(), row.call) << row.name;
  }
}

TEST_F(RemoteMethodsTest, ServiceIsNotCalledWhenAParameterIsMissing) {
  for (const RemoteRow& row : remoteProtocol())
    for (std::size_t i = 0; i < row.request.size(); ++i) {
      Lines parameters = row.request;
      parameters.erase(parameters.begin() + static_cast<std::ptrdiff_t>(i));
      expectMissing(row, parameters);
    }
}

TEST_F(RemoteMethodsTest, ParameterOfAnotherTypeCountsAsMissing) {
  for (const RemoteRow& row : remoteProtocol())
    for (std::size_t i = 0; i < row.request.size(); ++i)
      for (const std::string& other : withOtherTypes(row.request[i])) {
        Lines parameters = row.request;
        parameters[i] = other;
        expectMissing(row, parameters);
      }
}

TEST_F(RemoteMethodsTest, ParameterOfAnotherDirectionCountsAsMissing) {
  for (const RemoteRow& row : remoteProtocol())
    for (std::size_t i = 0; i < row.request.size(); ++i) {
      Lines parameters = row.request;
      parameters[i] = "out" + parameters[i].substr(2);
      expectMissing(row, parameters);
    }
}

TEST_F(RemoteMethodsTest, ParameterNameInAnotherCaseCountsAsMissing) {
  for (const RemoteRow& row : remoteProtocol())
    for (std::size_t i = 0; i < row.request.size(); ++i) {
      Lines parameters = row.request;
      std::string& parameter = parameters[i];
      const std::size_t name = parameter.find(' ', 3) + 1;
      parameter[name] = static_cast<char>(parameter[name] - 'a' + 'A');
      expectMissing(row, parameters);
    }
}

TEST_F(RemoteMethodsTest, SetTimeIntReadsTheParameterNamedSetTime) {
  EXPECT_TRUE(send("setTimeInt", {"in int setTimeInt=5"}).replies.empty());
  EXPECT_TRUE(m_service.calls().empty());
  EXPECT_TRUE(send("setTimeInt", {"in int setTime=5"}).replies.empty());
  EXPECT_EQ(m_service.calls(), Lines{"setTime epoch 5"});
}

TEST_F(RemoteMethodsTest, RefusalRepliesWithZeros) {
  m_service.refuse();
  EXPECT_EQ(send("getTimeUTCStrAndInts", {"in string getTimeUTCStrAndIntsString=x"}).replies,
            Lines{messageOf("reply", "getTimeUTCStrAndInts",
                            {"out bool getTimeUTCStrAndIntsReturn=false",
                             "out int getTimeUTCStrAndIntsHoursReturn=0",
                             "out int getTimeUTCStrAndIntsMinutesReturn=0",
                             "out int getTimeUTCStrAndIntsSecondsReturn=0"})});
  EXPECT_EQ(send("getDateUTCStrAndInts", {"in string getDateUTCStrAndIntsString=x"}).replies,
            Lines{messageOf("reply", "getDateUTCStrAndInts",
                            {"out bool getDateUTCStrAndIntsReturn=false",
                             "out int getDateUTCStrAndIntsDayReturn=0",
                             "out int getDateUTCStrAndIntsMonthReturn=0",
                             "out int getDateUTCStrAndIntsYearReturn=0"})});
  EXPECT_EQ(
      send("getTimeInts", {}).replies,
      Lines{messageOf("reply", "getTimeInts",
                      {"out int getTimeIntsHoursReturn=0", "out int getTimeIntsMinutesReturn=0",
                       "out int getTimeIntsSecondsReturn=0"})});
}

TEST_F(RemoteMethodsTest, RefusalRepliesFalse) {
  m_service.refuse();
  for (const RemoteRow& row : remoteProtocol()) {
    if (row.reply.size() != 1 || row.reply[0].rfind("out bool ", 0) != 0) continue;
    const std::string refused = row.reply[0].substr(0, row.reply[0].find('=')) + "=false";
    EXPECT_EQ(send(row.name, row.request).replies, Lines{messageOf("reply", row.name, {refused})});
    EXPECT_EQ(m_service.calls().back(), row.call);
  }
}

TEST_F(RemoteMethodsTest, EmptyTextIsAText) {
  send("getTimeUTCStr", {"in string getTimeUTCStrString="});
  send("setAlarmClock", {"in string setAlarmClockAlarmTime="});
  EXPECT_EQ(m_service.calls(), (Lines{"getTime \"\"", "setAlarmClock \"\" observer"}));
}

TEST_F(RemoteMethodsTest, LookUpIsExact) {
  for (const RemoteRow& row : remoteProtocol()) {
    const RemoteMethod* const method = findRemoteMethod(row.name);
    ASSERT_NE(method, nullptr) << row.name;
    EXPECT_EQ(method->name, row.name);
    EXPECT_EQ(method->replies, row.missing != Missing::noReply) << row.name;
    std::string capital = row.name;
    capital[0] = static_cast<char>(capital[0] - 'a' + 'A');
    EXPECT_EQ(findRemoteMethod(capital), nullptr) << row.name;
    EXPECT_EQ(findRemoteMethod(row.name + "x"), nullptr) << row.name;
    EXPECT_EQ(findRemoteMethod(row.name + std::string(1, '\0')), nullptr) << row.name;
  }
}

}  // namespace
