#include "ClockServiceInvoker.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ClockService.h"
#include "ClockServiceObserverProxy.h"
#include "support/Framework.h"
#include "support/LogCapture.h"
#include "support/Part.h"
#include "unit/RecordingService.h"

namespace {

using support::LogCapture;
using support::Outcome;
using support::Response;
using Lines = std::vector<std::string>;

constexpr const char* kGetTime = "call getTime\n";
const Lines kTime{"reply getTime\nout string getTimeStringReturn=09:07\n"};
const std::string kNoClock = "Could not cast executable to ClockServiceIfc";
const std::string kNotDecoded = "Failed to decode msg";

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

  Lines repliesTo(Executable* executable, const std::string& message,
                  const std::string& codec = "text") {
    const Outcome outcome = support::request(m_invoker, executable, message, codec);
    EXPECT_TRUE(outcome.deleted) << message;
    return outcome.replies;
  }
  Lines repliesTo(const std::string& message) { return repliesTo(&m_service, message); }

  support::TextCodec m_marked{"marked "};
  support::Framework m_framework;
  std::string m_decoded;  // of the latest request
  unit::RecordingService m_service;
  ClockServiceInvoker m_invoker;
};

// "2 ClockServiceInvoker: TEXT" for each error.
std::string errorsOf(const LogCapture& log) {
  std::string text;
  for (const host::LogEntry& entry : log.entries()) {
    if (entry.level <= 2)
      text += std::to_string(entry.level) + " " + entry.component + ": " + entry.text;
  }
  return text;
}

struct BadRequest {
  Executable* executable;
  std::string message;
  const char* codec;
  std::string error;
};

TEST_F(ClockServiceInvokerTest, BadRequestIsLoggedAndNotAnswered) {
  support::Part other;
  std::vector<BadRequest> requests{{nullptr, kGetTime, "text", kNoClock},
                                   {&other, kGetTime, "text", kNoClock},
                                   {&m_service, kGetTime, "unheard-of", kNotDecoded}};
  for (const char* const message : {"", "getTime\n", "call getTime\nbroken\n", "\n"})
    requests.push_back({&m_service, message, "text", kNotDecoded});
  for (const char* const name : {"", "GetTime", "getTIME", "gettime", "getTim", "getTimes",
                                 " getTime", "getTime ", "SetTime", "convertUtcStringToLocalString",
                                 "setTimeInts", "timeChangeEvent", "ClockServiceIfc"}) {
    const std::string message = std::string("call ") + name + "\nin int setTime=5\n";
    requests.push_back({&m_service, message, "text", "Invalid Message, " + message});
  }
  for (const BadRequest& row : requests) {
    const LogCapture log;
    EXPECT_EQ(repliesTo(row.executable, row.message, row.codec), Lines{}) << row.message;
    EXPECT_EQ(errorsOf(log), "2 ClockServiceInvoker: " + row.error) << row.message;
    EXPECT_EQ(log.has(5, "handleMessage called: " + row.message), row.error.front() == 'I');
  }
  EXPECT_EQ(m_service.calls, Lines{});
}

TEST_F(ClockServiceInvokerTest, RequestWithoutBytesDoesNotDecode) {
  for (const int length : {0, -1}) {
    const LogCapture log;
    Outcome outcome;
    m_invoker.handleMessage(&m_service, nullptr, length, new Response(outcome));
    EXPECT_TRUE(outcome.replies.empty() && outcome.deleted) << "length " << length;
    EXPECT_TRUE(log.has(2, kNotDecoded)) << "length " << length;
  }
}

TEST_F(ClockServiceInvokerTest, RequestWithoutAContextOrAResponseIsLogged) {
  const LogCapture log;
  ClockServiceInvoker invoker;
  const Outcome outcome = support::request(invoker, &m_service, kGetTime);
  EXPECT_TRUE(outcome.replies.empty() && outcome.deleted);
  m_invoker.handleMessage(&m_service, kGetTime, 13, nullptr);
  m_invoker.handleMessage(nullptr, kGetTime, 13, nullptr);
  EXPECT_EQ(m_service.calls, Lines{});
  EXPECT_EQ(log.count(kNotDecoded), 2U);
  EXPECT_EQ(log.count(kNoClock), 1U);
}

TEST_F(ClockServiceInvokerTest, CodecOfTheRequestWritesTheReply) {
  EXPECT_EQ(repliesTo(&m_service, std::string("marked ") + kGetTime, "marked"),
            Lines{"marked " + kTime[0]});
  for (const std::string& name : m_framework.codecsAsked) EXPECT_EQ(name, "marked");
}

TEST_F(ClockServiceInvokerTest, OnlyTheBytesOfTheRequestAreRead) {
  const std::string message = "call getTime\nnot a parameter\n";
  Outcome outcome;
  m_invoker.handleMessage(&m_service, message.data(), 13, new Response(outcome));
  EXPECT_EQ(outcome.replies, kTime);
  EXPECT_EQ(m_decoded, kGetTime);
}

TEST_F(ClockServiceInvokerTest, AnyBytesOfRequestAndReplyAreWhole) {
  for (const std::string& text : {std::string("a\0b", 3), std::string(70'000, 't')}) {
    m_service.timeText = text;
    const std::string message = "call getTime\nin string x=" + text + "\n";
    EXPECT_EQ(repliesTo(message),
              Lines{"reply getTime\nout string getTimeStringReturn=" + text + "\n"});
    EXPECT_EQ(m_decoded, message);
  }
}

TEST_F(ClockServiceInvokerTest, ReplyOfAnyLengthIsWhole) {
  for (std::size_t length = 0; length < 1100; ++length) {
    m_service.timeText.assign(length, 't');
    const Lines whole{"reply getTime\nout string getTimeStringReturn=" + m_service.timeText + "\n"};
    ASSERT_EQ(repliesTo(kGetTime), whole) << length;
  }
}

TEST_F(ClockServiceInvokerTest, ReplyIsWholeAlthoughTheCodecHasReadIt) {
  m_framework.text.readsItsReplies = true;
  for (int i = 0; i < 2; ++i) EXPECT_EQ(repliesTo(kGetTime), kTime);
}

TEST_F(ClockServiceInvokerTest, ReplyStreamIsFreshWhateverTheCodecDidToTheRequests) {
  m_framework.text.afterReading = [](const std::string&, std::iostream& stream) {
    stream << "left over" << std::hex << std::showbase;
    stream.setstate(std::ios_base::failbit);
  };
  m_framework.text.replyEnd = 255;
  for (int i = 0; i < 2; ++i) EXPECT_EQ(repliesTo(kGetTime), Lines{kTime[0] + "255"});
}

TEST_F(ClockServiceInvokerTest, AnswersForThePluginsOwnService) {
  ClockService service;
  EXPECT_EQ(repliesTo(&service, "call cancelAlarmClock\nin int cancelAlarmClockAlarmId=1\n"),
            Lines{"reply cancelAlarmClock\nout bool cancelAlarmClockReturn=false\n"});
}

TEST_F(ClockServiceInvokerTest, RequestsAreTracedAtLevelFive) {
  for (const int level : {4, 5}) {
    const LogCapture log(level);
    repliesTo("call setTime\n");  // a missing parameter is no error
    EXPECT_EQ(log.entries().size(), level == 5 ? 1U : 0U) << log.text();
    EXPECT_EQ(log.has(5, "handleMessage called: call setTime\n"), level == 5);
  }
}

TEST_F(ClockServiceInvokerTest, LogEntriesCarryTheirSourceFileAndLine) {
  const LogCapture log;
  repliesTo(nullptr, kGetTime);
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

TEST(ClockServiceInvokerStart, InitialisationIsLoggedAtLevelFour) {
  support::Framework framework;
  ClockServiceInvoker invoker;
  for (const int level : {3, 4}) {
    const LogCapture log(level);
    invoker.initInvoker(&framework);
    EXPECT_EQ(log.has(4, "ClockServiceInvoker initialised"), level == 4);
    for (const auto& entry : log.entries()) EXPECT_EQ(entry.component, "ClockServiceInvoker");
  }
}

TEST(ClockServiceInvokerStart, FactoryMakesAnInvoker) {
  const std::unique_ptr<Invoker> invoker(createClockServiceInvoker());
  ASSERT_NE(dynamic_cast<ClockServiceInvoker*>(invoker.get()), nullptr);
  support::Framework framework;
  unit::RecordingService service;
  invoker->initInvoker(&framework);
  EXPECT_EQ(support::request(*invoker, &service, kGetTime).replies, kTime);
}

// The three methods that pass the caller's proxy to the service as an observer.
const Lines kObserving{"call observeTimeEvents\n", "call unobserveTimeEvents\n",
                       "call setAlarmClock\nin string setAlarmClockAlarmTime=06:30\n"};

// A proxy that is not an observer.
class StrangeProxy : public Proxy {
 public:
  void initProxy(ProxyRequest&) override {}
};

TEST_F(ClockServiceInvokerTest, CallersProxyIsRequestedByInterfaceAndAddress) {
  for (const std::string& message : kObserving)
    support::request(m_invoker, &m_service, message, "text", "at 6");
  EXPECT_EQ(m_framework.proxiesAsked, Lines(3, "ClockServiceObserverIfc at at 6"));
}

TEST_F(ClockServiceInvokerTest, CallersProxyIsPassedToTheServiceAsAnObserver) {
  ClockServiceObserverProxy proxy;
  m_framework.proxy = &proxy;
  for (const std::string& message : kObserving) {
    repliesTo(message);
    EXPECT_EQ(m_service.lastObserver, static_cast<ClockServiceObserverIfc*>(&proxy)) << message;
  }
}

TEST_F(ClockServiceInvokerTest, MissingProxyOrOneOfAnotherInterfaceIsANullObserver) {
  StrangeProxy strange;
  for (Proxy* const proxy : {static_cast<Proxy*>(nullptr), static_cast<Proxy*>(&strange)}) {
    m_framework.proxy = proxy;
    m_service.calls.clear();
    Lines replies;
    for (const std::string& message : kObserving) replies.push_back(repliesTo(message).at(0));
    EXPECT_EQ(replies,
              (Lines{"reply observeTimeEvents\nout bool observeTimeEventsReturn=false\n",
                     "reply unobserveTimeEvents\nout bool unobserveTimeEventsReturn=false\n",
                     "reply setAlarmClock\nout int setAlarmClockReturn=77\n"}));
    EXPECT_EQ(m_service.calls, (Lines{"observeTimeEvents null", "unobserveTimeEvents null",
                                      "setAlarmClock \"06:30\" null"}));
  }
}

// An alarm's time is read after its proxy is requested.
TEST_F(ClockServiceInvokerTest, CallersProxyIsRequestedByThreeMethodsOnly) {
  for (const char* const message :
       {kGetTime, "call cancelAlarmClock\nin int cancelAlarmClockAlarmId=1\n",
        "call setTimeInt\nin int setTime=1\n", "call nothing\n"})
    repliesTo(message);
  EXPECT_EQ(m_framework.proxiesAsked, Lines{});
  EXPECT_EQ(repliesTo("call setAlarmClock\n"), Lines{"reply setAlarmClock\n"});
  EXPECT_EQ(m_framework.proxiesAsked.size(), 1U);
}

}  // namespace
