#include "ClockServiceObserverProxy.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
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

// A peer that records the messages sent to it. A RemotePeer would have a proxy of its own, and is
// always reachable.
class RecordingRequest final : public ProxyRequest {
 public:
  bool sendMethod(Method& method) override {
    messages.push_back(support::textOf(method));
    return reachable;
  }
  bool reachable = true;
  std::vector<std::string> messages;
};

class ClockServiceObserverProxyTest : public testing::Test {
 protected:
  ClockServiceObserverProxyTest() { m_proxy.initProxy(m_request); }

  RecordingRequest m_request;
  ClockServiceObserverProxy m_proxy;
};

TEST_F(ClockServiceObserverProxyTest, EachEventIsOneMessage) {
  const std::string europe = "LOC-1:00DST-2:00,M3.5.0/02:00,M10.5.0/03:00";
  const std::string zone = "call timezoneChangeEvent\nin string timezoneChangeEventTimezone=";
  ClockServiceObserverIfc& observer = m_proxy;
  const struct {
    std::function<void()> raise;
    std::string message;
  } table[] = {
      {[&] { observer.timezoneChangeEvent(europe); }, zone + europe + "\n"},
      {[&] { observer.timezoneChangeEvent(""); }, zone + "\n"},
      {[&] { observer.timeChangeEvent(3, 59, 60); },
       "call timeChangeEvent\nin int timeChangeEventHours=3\n"
       "in int timeChangeEventMinutes=59\nin int timeChangeEventSeconds=60\n"},
      {[&] { observer.dateChangeEvent(14, 11, 30); },
       "call dateChangeEvent\nin int dateChangeEventDay=14\n"
       "in int dateChangeEventMonth=11\nin int dateChangeEventYear=30\n"},
      {[&] { observer.dateChangeEvent(-1, INT_MAX, INT_MIN); },
       "call dateChangeEvent\nin int dateChangeEventDay=-1\n"
       "in int dateChangeEventMonth=2147483647\nin int dateChangeEventYear=-2147483648\n"},
      {[&] { observer.alarmClockEvent(7); },
       "call alarmClockEvent\nin int alarmClockEventAlarm=7\n"},
  };
  for (const auto& row : table) {
    m_request.messages.clear();
    row.raise();
    EXPECT_EQ(m_request.messages, std::vector{row.message});
  }
}

TEST_F(ClockServiceObserverProxyTest, FailedDeliveryIsIgnored) {
  m_request.reachable = false;
  m_proxy.alarmClockEvent(1);
  m_proxy.alarmClockEvent(2);
  EXPECT_EQ(m_request.messages.size(), 2U);
}

TEST_F(ClockServiceObserverProxyTest, LifeCycleSendsNothing) {
  host::VirtualClock clock;
  host::HostContext context(clock);
  Executable& executable = m_proxy;
  executable.init(context);
  executable.timerEvent(1);
  executable.shutdown();
  EXPECT_TRUE(m_request.messages.empty());
}

TEST_F(ClockServiceObserverProxyTest, FactoryMakesAProxyThatObservesForItsOwnPeer) {
  const std::unique_ptr<Proxy> proxy(createClockServiceObserverProxy());
  ASSERT_NE(proxy, nullptr);
  RecordingRequest otherRequest;
  proxy->initProxy(otherRequest);
  auto* const observer = dynamic_cast<ClockServiceObserverIfc*>(proxy.get());
  ASSERT_NE(observer, nullptr);
  observer->alarmClockEvent(5);
  EXPECT_EQ(otherRequest.messages.size(), 1U);
  EXPECT_TRUE(m_request.messages.empty());
}

}  // namespace
