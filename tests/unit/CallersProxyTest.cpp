// The remote methods that pass the caller's proxy to the service as an observer.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ClockServiceInvoker.h"
#include "ClockServiceObserverProxy.h"
#include "support/Framework.h"
#include "unit/RecordingService.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kObserve = "call observeTimeEvents\n";
constexpr const char* kUnobserve = "call unobserveTimeEvents\n";
constexpr const char* kSetAlarm = "call setAlarmClock\nin string setAlarmClockAlarmTime=06:30\n";

// A proxy that is not an observer.
class StrangeProxy : public Proxy {
 public:
  void initProxy(ProxyRequest&) override {}
};

class CallersProxyTest : public testing::Test {
 protected:
  CallersProxyTest() { m_invoker.initInvoker(&m_framework); }

  Lines send(const std::string& message, const std::string& address = "peer 5") {
    const auto outcome = support::request(m_invoker, &m_service, message, "text", address);
    EXPECT_TRUE(outcome.deleted) << message;
    return outcome.replies;
  }

  support::Framework m_framework;
  unit::RecordingService m_service;
  ClockServiceInvoker m_invoker;
};

TEST_F(CallersProxyTest, IsRequestedByInterfaceAndAddress) {
  send(kObserve, "peer 5");
  send(kUnobserve, "peer 6");
  send(kSetAlarm, "");
  EXPECT_EQ(m_framework.proxiesAsked,
            (Lines{"ClockServiceObserverIfc at peer 5", "ClockServiceObserverIfc at peer 6",
                   "ClockServiceObserverIfc at "}));
}

TEST_F(CallersProxyTest, IsPassedToTheServiceAsAnObserver) {
  ClockServiceObserverProxy proxy;
  m_framework.proxy = &proxy;
  for (const char* const message : {kObserve, kUnobserve, kSetAlarm}) {
    send(message);
    EXPECT_EQ(m_service.lastObserver(), static_cast<ClockServiceObserverIfc*>(&proxy)) << message;
  }
}

TEST_F(CallersProxyTest, MissingProxyIsANullObserver) {
  EXPECT_EQ(send(kObserve),
            Lines{"reply observeTimeEvents\nout bool observeTimeEventsReturn=false\n"});
  EXPECT_EQ(send(kUnobserve),
            Lines{"reply unobserveTimeEvents\nout bool unobserveTimeEventsReturn=false\n"});
  EXPECT_EQ(send(kSetAlarm), Lines{"reply setAlarmClock\nout int setAlarmClockReturn=77\n"});
  EXPECT_EQ(m_service.calls(), (Lines{"observeTimeEvents null", "unobserveTimeEvents null",
                                      "setAlarmClock \"06:30\" null"}));
}

TEST_F(CallersProxyTest, ProxyOfAnotherInterfaceIsANullObserver) {
  StrangeProxy proxy;
  m_framework.proxy = &proxy;
  send(kObserve);
  send(kUnobserve);
  send(kSetAlarm);
  EXPECT_EQ(m_service.calls(), (Lines{"observeTimeEvents null", "unobserveTimeEvents null",
                                      "setAlarmClock \"06:30\" null"}));
}

TEST_F(CallersProxyTest, IsRequestedEvenWhenTheAlarmTimeIsMissing) {
  EXPECT_EQ(send("call setAlarmClock\n"), Lines{"reply setAlarmClock\n"});
  EXPECT_EQ(m_framework.proxiesAsked, Lines{"ClockServiceObserverIfc at peer 5"});
  EXPECT_TRUE(m_service.calls().empty());
}

TEST_F(CallersProxyTest, IsNotRequestedByOtherMethods) {
  for (const char* const message :
       {"call getTime\n", "call cancelAlarmClock\nin int cancelAlarmClockAlarmId=1\n",
        "call setTimeInt\nin int setTime=1\n", "call nothing\n"})
    send(message);
  EXPECT_TRUE(m_framework.proxiesAsked.empty());
}

}  // namespace
