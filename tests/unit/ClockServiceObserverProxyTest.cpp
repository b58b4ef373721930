#include "ClockServiceObserverProxy.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <vector>

#include "ClockServiceObserverIfc.h"
#include "Method.h"
#include "ProxyRequest.h"
#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "support/MethodText.h"

namespace {

// A peer that keeps what it is sent.
class RecordingRequest final : public ProxyRequest {
 public:
  bool sendMethod(Method& method) override {
    m_messages.push_back(support::textOf(method));
    return m_reachable;
  }
  void setReachable(bool reachable) { m_reachable = reachable; }
  [[nodiscard]] const std::vector<std::string>& messages() const { return m_messages; }

 private:
  std::vector<std::string> m_messages;
  bool m_reachable = true;
};

class ClockServiceObserverProxyTest : public testing::Test {
 protected:
  ClockServiceObserverProxyTest() { m_proxy.initProxy(m_request); }

  RecordingRequest m_request;
  ClockServiceObserverProxy m_proxy;
};

using Messages = std::vector<std::string>;

TEST_F(ClockServiceObserverProxyTest, DateIsThreeNumbersInOrder) {
  m_proxy.dateChangeEvent(14, 11, 30);
  EXPECT_EQ(m_request.messages(), (Messages{"call dateChangeEvent\n"
                                            "in int dateChangeEventDay=14\n"
                                            "in int dateChangeEventMonth=11\n"
                                            "in int dateChangeEventYear=30\n"}));
}

TEST_F(ClockServiceObserverProxyTest, TimeIsThreeNumbersInOrder) {
  m_proxy.timeChangeEvent(3, 59, 60);
  EXPECT_EQ(m_request.messages(), (Messages{"call timeChangeEvent\n"
                                            "in int timeChangeEventHours=3\n"
                                            "in int timeChangeEventMinutes=59\n"
                                            "in int timeChangeEventSeconds=60\n"}));
}

TEST_F(ClockServiceObserverProxyTest, ZoneIsAText) {
  m_proxy.timezoneChangeEvent("LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00");
  EXPECT_EQ(m_request.messages(), (Messages{"call timezoneChangeEvent\n"
                                            "in string timezoneChangeEventTimezone="
                                            "LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00\n"}));
}

TEST_F(ClockServiceObserverProxyTest, EmptyZoneIsSentAsEmptyText) {
  m_proxy.timezoneChangeEvent("");
  EXPECT_EQ(m_request.messages(), (Messages{"call timezoneChangeEvent\n"
                                            "in string timezoneChangeEventTimezone=\n"}));
}

TEST_F(ClockServiceObserverProxyTest, AlarmIsANumber) {
  m_proxy.alarmClockEvent(7);
  EXPECT_EQ(m_request.messages(), (Messages{"call alarmClockEvent\n"
                                            "in int alarmClockEventAlarm=7\n"}));
}

TEST_F(ClockServiceObserverProxyTest, ValuesArePassedOnAsTheyAre) {
  m_proxy.dateChangeEvent(-1, INT_MAX, INT_MIN);
  m_proxy.timeChangeEvent(99, -99, 0);
  EXPECT_EQ(m_request.messages(), (Messages{"call dateChangeEvent\n"
                                            "in int dateChangeEventDay=-1\n"
                                            "in int dateChangeEventMonth=2147483647\n"
                                            "in int dateChangeEventYear=-2147483648\n",
                                            "call timeChangeEvent\n"
                                            "in int timeChangeEventHours=99\n"
                                            "in int timeChangeEventMinutes=-99\n"
                                            "in int timeChangeEventSeconds=0\n"}));
}

TEST_F(ClockServiceObserverProxyTest, EventsThroughTheInterfaceAreTheSame) {
  ClockServiceObserverIfc& observer = m_proxy;
  const auto sendAll = [](auto& target) {
    target.timezoneChangeEvent("LOC-1:00");
    target.timeChangeEvent(1, 2, 3);
    target.dateChangeEvent(4, 5, 2006);
    target.alarmClockEvent(8);
  };
  sendAll(m_proxy);
  const Messages direct = m_request.messages();
  sendAll(observer);
  ASSERT_EQ(direct.size(), 4U);
  EXPECT_EQ(Messages(m_request.messages().begin() + 4, m_request.messages().end()), direct);
  EXPECT_EQ(dynamic_cast<Proxy*>(&observer), &m_proxy);
}

TEST_F(ClockServiceObserverProxyTest, FailedDeliveryIsIgnored) {
  m_request.setReachable(false);
  m_proxy.alarmClockEvent(1);
  m_proxy.alarmClockEvent(2);
  EXPECT_EQ(m_request.messages().size(), 2U);
}

TEST_F(ClockServiceObserverProxyTest, LifeCycleSendsNothing) {
  host::VirtualClock clock;
  host::HostContext context(clock);
  Executable& executable = m_proxy;
  executable.init(context);
  executable.timerEvent(1);
  executable.shutdown();
  EXPECT_TRUE(m_request.messages().empty());
}

TEST_F(ClockServiceObserverProxyTest, TwoProxiesSendToTheirOwnPeers) {
  RecordingRequest otherRequest;
  ClockServiceObserverProxy other;
  other.initProxy(otherRequest);
  other.alarmClockEvent(9);
  EXPECT_TRUE(m_request.messages().empty());
  EXPECT_EQ(otherRequest.messages().size(), 1U);
}

TEST_F(ClockServiceObserverProxyTest, FactoryMakesAProxyThatObserves) {
  const std::unique_ptr<Proxy> proxy(createClockServiceObserverProxy());
  ASSERT_NE(proxy, nullptr);
  proxy->initProxy(m_request);
  auto* const observer = dynamic_cast<ClockServiceObserverIfc*>(proxy.get());
  ASSERT_NE(observer, nullptr);
  observer->alarmClockEvent(5);
  EXPECT_EQ(m_request.messages().size(), 1U);
}

}  // namespace
