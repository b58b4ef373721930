#include "ClockServiceInvoker.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ClockService.h"
#include "support/Framework.h"
#include "support/LogCapture.h"
#include "support/Part.h"
#include "unit/RecordingService.h"

namespace {

using support::LogCapture;
using support::Outcome;
using support::Response;
using Lines = std::vector<std::string>;

class ThrowingService : public unit::RecordingService {
 public:
  int getTimeVal() override { throw std::logic_error("broken"); }
};

class ClockServiceInvokerTest : public testing::Test {
 protected:
  ClockServiceInvokerTest() {
    m_framework.codecs["marked"] = &m_marked;
    m_framework.text.afterReading = [this](const std::string& bytes, std::iostream&) {
      m_decoded = bytes;
    };
    m_invoker.initInvoker(&m_framework);
  }

  Outcome send(Executable* executable, const std::string& message,
               const std::string& codec = "text") {
    return support::request(m_invoker, executable, message, codec);
  }

  support::TextCodec m_marked{"marked "};
  support::Framework m_framework;
  std::string m_decoded;  // of the latest request
  unit::RecordingService m_service;
  ClockServiceInvoker m_invoker;
};

std::string errorsOf(const LogCapture& log) {
  std::string text;
  for (const host::LogEntry& entry : log.entries())
    if (entry.level <= 2) text += entry.component + ": " + entry.text + "\n";
  return text;
}

TEST_F(ClockServiceInvokerTest, RequestIsAnsweredOnceAndTheResponseDeleted) {
  const Outcome outcome = send(&m_service, "call getTime\n");
  EXPECT_EQ(outcome.replies, Lines{"reply getTime\nout string getTimeStringReturn=09:07\n"});
  EXPECT_TRUE(outcome.deleted);
  EXPECT_EQ(m_service.calls(), Lines{"getTime"});
}

TEST_F(ClockServiceInvokerTest, WithoutAContextARequestIsLoggedAndNotAnswered) {
  const LogCapture log;
  ClockServiceInvoker invoker;
  const Outcome outcome = support::request(invoker, &m_service, "call getTime\n");
  EXPECT_TRUE(outcome.replies.empty());
  EXPECT_TRUE(outcome.deleted);
  EXPECT_TRUE(m_service.calls().empty());
  EXPECT_EQ(errorsOf(log), "ClockServiceInvoker: Failed to decode msg\n");
}

TEST_F(ClockServiceInvokerTest, CodecOfTheRequestWritesTheReply) {
  const Outcome outcome = send(&m_service, "marked call getTime\n", "marked");
  EXPECT_EQ(outcome.replies, Lines{"marked reply getTime\nout string getTimeStringReturn=09:07\n"});
  for (const std::string& name : m_framework.codecsAsked) EXPECT_EQ(name, "marked");
}

TEST_F(ClockServiceInvokerTest, OnlyTheBytesOfTheRequestAreRead) {
  const std::string message = "call getTime\nnot a parameter\n";
  Outcome outcome;
  m_invoker.handleMessage(&m_service, message.data(), 13, new Response(outcome));
  EXPECT_EQ(outcome.replies.size(), 1U);
  EXPECT_EQ(m_decoded, "call getTime\n");
}

TEST_F(ClockServiceInvokerTest, BytesOfRequestAndReplyMayBeZero) {
  const std::string text("a\0b", 3);
  m_service.setTimeText(text);
  const std::string message = std::string("call getTime\nin string x=") + text + "\n";
  const Outcome outcome = send(&m_service, message);
  EXPECT_EQ(m_decoded, message);
  EXPECT_EQ(outcome.replies, Lines{"reply getTime\nout string getTimeStringReturn=" + text + "\n"});
}

TEST_F(ClockServiceInvokerTest, LongRequestAndReplyAreWhole) {
  const std::string text(70'000, 't');
  m_service.setTimeText(text);
  const std::string message = "call getTime\nin string x=" + text + "\n";
  EXPECT_EQ(send(&m_service, message).replies,
            Lines{"reply getTime\nout string getTimeStringReturn=" + text + "\n"});
  EXPECT_EQ(m_decoded, message);
}

TEST_F(ClockServiceInvokerTest, ReplyStreamIsFreshWhateverTheCodecDidToTheRequests) {
  m_framework.text.afterReading = [](const std::string&, std::iostream& stream) {
    stream << "left over" << std::hex << std::showbase;
    stream.setstate(std::ios_base::failbit);
  };
  m_framework.text.replyEnd = 255;
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(send(&m_service, "call getTime\n").replies,
              Lines{"reply getTime\nout string getTimeStringReturn=09:07\n255"});
}

TEST_F(ClockServiceInvokerTest, AnswersForThePluginsOwnService) {
  ClockService service;
  EXPECT_EQ(send(&service, "call cancelAlarmClock\nin int cancelAlarmClockAlarmId=1\n").replies,
            Lines{"reply cancelAlarmClock\nout bool cancelAlarmClockReturn=false\n"});
}

TEST_F(ClockServiceInvokerTest, NullServiceIsLoggedAndNotAnswered) {
  const LogCapture log;
  const Outcome outcome = send(nullptr, "call getTime\n");
  EXPECT_TRUE(outcome.replies.empty());
  EXPECT_TRUE(outcome.deleted);
  EXPECT_EQ(errorsOf(log), "ClockServiceInvoker: Could not cast executable to ClockServiceIfc\n");
  EXPECT_TRUE(log.has(2, "Could not cast executable to ClockServiceIfc"));
  EXPECT_TRUE(m_framework.codecsAsked.empty());
}

TEST_F(ClockServiceInvokerTest, AnotherServiceIsLoggedAndNotAnswered) {
  const LogCapture log;
  support::Part other;
  const Outcome outcome = send(&other, "call getTime\n");
  EXPECT_TRUE(outcome.replies.empty());
  EXPECT_TRUE(outcome.deleted);
  EXPECT_EQ(errorsOf(log), "ClockServiceInvoker: Could not cast executable to ClockServiceIfc\n");
  EXPECT_TRUE(log.has(2, "Could not cast executable to ClockServiceIfc"));
}

TEST_F(ClockServiceInvokerTest, UnknownCodecIsLoggedAndNotAnswered) {
  const LogCapture log;
  const Outcome outcome = send(&m_service, "call getTime\n", "unheard-of");
  EXPECT_TRUE(outcome.replies.empty());
  EXPECT_TRUE(outcome.deleted);
  EXPECT_EQ(errorsOf(log), "ClockServiceInvoker: Failed to decode msg\n");
  EXPECT_TRUE(log.has(2, "Failed to decode msg"));
  EXPECT_EQ(m_framework.codecsAsked, Lines{"unheard-of"});
  EXPECT_TRUE(m_service.calls().empty());
}

TEST_F(ClockServiceInvokerTest, RequestThatDoesNotDecodeIsLoggedAndNotAnswered) {
  for (const char* const message : {"", "getTime\n", "call getTime\nbroken\n", "\n"}) {
    const LogCapture log;
    const Outcome outcome = send(&m_service, message);
    EXPECT_TRUE(outcome.replies.empty()) << message;
    EXPECT_TRUE(outcome.deleted) << message;
    EXPECT_EQ(errorsOf(log), "ClockServiceInvoker: Failed to decode msg\n") << message;
    EXPECT_TRUE(log.has(2, "Failed to decode msg")) << message;
    EXPECT_FALSE(log.hasPart("handleMessage called")) << message;
  }
  EXPECT_TRUE(m_service.calls().empty());
}

TEST_F(ClockServiceInvokerTest, RequestWithoutBytesDoesNotDecode) {
  for (const int length : {0, -1}) {
    const LogCapture log;
    Outcome outcome;
    m_invoker.handleMessage(&m_service, nullptr, length, new Response(outcome));
    EXPECT_TRUE(outcome.replies.empty() && outcome.deleted) << "length " << length;
    EXPECT_TRUE(log.has(2, "Failed to decode msg")) << "length " << length;
  }
}

TEST_F(ClockServiceInvokerTest, UnknownNameIsLoggedWithTheRequestAndNotAnswered) {
  for (const char* const name : {"", "GetTime", "getTIME", "gettime", "getTim", "getTimes",
                                 " getTime", "getTime ", "SetTime", "convertUtcStringToLocalString",
                                 "setTimeInts", "timeChangeEvent", "ClockServiceIfc"}) {
    const LogCapture log;
    const std::string message = std::string("call ") + name + "\nin int setTime=5\n";
    const Outcome outcome = send(&m_service, message);
    EXPECT_TRUE(outcome.replies.empty()) << name;
    EXPECT_TRUE(outcome.deleted) << name;
    EXPECT_EQ(errorsOf(log), "ClockServiceInvoker: Invalid Message, " + message + "\n") << name;
    EXPECT_TRUE(log.has(2, "Invalid Message, " + message)) << name;
  }
  EXPECT_TRUE(m_service.calls().empty());
}

TEST_F(ClockServiceInvokerTest, EveryDecodedRequestIsTraced) {
  const LogCapture log(5);
  send(&m_service, "call setTimeInt\nin int setTime=5\n");
  send(&m_service, "call nothing\n");
  EXPECT_TRUE(log.has(5, "handleMessage called: call setTimeInt\nin int setTime=5\n"));
  EXPECT_TRUE(log.has(5, "handleMessage called: call nothing\n"));
}

TEST_F(ClockServiceInvokerTest, RequestsAreNotTracedBelowLevelFive) {
  const LogCapture log(4);
  send(&m_service, "call getTime\n");
  EXPECT_TRUE(log.entries().empty()) << log.text();
}

TEST_F(ClockServiceInvokerTest, MissingParameterIsNoError) {
  const LogCapture log;
  send(&m_service, "call setTime\n");
  EXPECT_EQ(errorsOf(log), "");
}

TEST_F(ClockServiceInvokerTest, LogEntriesCarryTheirSourceFileAndLine) {
  const LogCapture log;
  send(nullptr, "call getTime\n");
  const auto entries = log.entries();
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_NE(entries[0].file.find("ClockServiceInvoker.cpp"), std::string::npos) << entries[0].file;
  EXPECT_GT(entries[0].line, 0);
}

TEST_F(ClockServiceInvokerTest, ResponseIsDeletedWhenTheServiceThrows) {
  ThrowingService broken;
  Outcome outcome;
  const std::string message = "call getTimeVal\n";
  EXPECT_THROW(m_invoker.handleMessage(&broken, message.data(), static_cast<int>(message.size()),
                                       new Response(outcome)),
               std::logic_error);
  EXPECT_TRUE(outcome.deleted);
}

TEST_F(ClockServiceInvokerTest, NullResponseIsTolerated) {
  const LogCapture log;
  const std::string message = "call setTimeInt\nin int setTime=5\n";
  m_invoker.handleMessage(nullptr, message.data(), static_cast<int>(message.size()), nullptr);
  m_invoker.handleMessage(&m_service, message.data(), static_cast<int>(message.size()), nullptr);
  EXPECT_TRUE(m_service.calls().empty());
  EXPECT_TRUE(log.has(2, "Could not cast executable to ClockServiceIfc"));
}

TEST(ClockServiceInvokerStart, InitialisationIsLoggedAtLevelFour) {
  support::Framework framework;
  ClockServiceInvoker invoker;
  {
    const LogCapture log(4);
    invoker.initInvoker(&framework);
    ASSERT_EQ(log.entries().size(), 1U);
    EXPECT_TRUE(log.has(4, "ClockServiceInvoker initialised"));
    EXPECT_EQ(log.entries()[0].component, "ClockServiceInvoker");
  }
  const LogCapture log(3);
  invoker.initInvoker(&framework);
  EXPECT_TRUE(log.entries().empty());
}

TEST(ClockServiceInvokerStart, FactoryMakesAnInvoker) {
  const std::unique_ptr<Invoker> invoker(createClockServiceInvoker());
  ASSERT_NE(dynamic_cast<ClockServiceInvoker*>(invoker.get()), nullptr);
  support::Framework framework;
  unit::RecordingService service;
  invoker->initInvoker(&framework);
  EXPECT_EQ(support::request(*invoker, &service, "call getTime\n").replies.size(), 1U);
}

}  // namespace
