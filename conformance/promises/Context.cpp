#include "Context.h"

#include <functional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "LocalMgmtIfc.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "Promise.h"
#include "SecurityLogServiceIfc.h"
#include "TimerOwner.h"

namespace {

using conformance::TimerOwner;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;
using Ids = std::vector<int>;

class ContextPromise : public conformance::Promise {
 protected:
  Context& context() { return platform().context(); }
  void pass(milliseconds duration) { platform().passTime(duration); }
  Ids expiredAfter(milliseconds duration) {
    pass(duration);
    return m_owner.expired;
  }

  int timer(unsigned period) { return context().createTimer(m_owner, period); }
  int startedTimer(unsigned period) {
    const int id = timer(period);
    context().startTimer(id);
    return id;
  }

  TimerOwner m_owner;
};

TEST_F(ContextPromise, FindsTheServicesByName) {
  promises("The service registered as `name` (\"LocalMgmtIfc\", ...), or null.");
  EXPECT_NE(context().getService("LocalMgmtIfc"), nullptr);
  for (const char* const name : {"", "localMgmtIfc", "NoSuchService"})
    EXPECT_EQ(context().getService(name), nullptr) << name;
}

TEST_F(ContextPromise, ServicesHaveTheirInterfaces) {
  promises("who reaches the wanted interface by dynamic_cast.");
  EXPECT_NE(dynamic_cast<LocalMgmtIfc*>(context().getService("LocalMgmtIfc")), nullptr);
  Executable* const physical = context().getService("PhysicalInterfaceServiceIfc");
  EXPECT_NE(dynamic_cast<PhysicalInterfaceServiceIfc*>(physical), nullptr);
  Executable* const security = context().getService("SecurityLogServiceIfc");
  EXPECT_NE(dynamic_cast<SecurityLogServiceIfc*>(security), nullptr);
}

TEST_F(ContextPromise, CreatesTimersStopped) {
  promises("A stopped one-shot timer");
  EXPECT_GT(timer(1000), 0);
  EXPECT_EQ(expiredAfter(hours{1}), Ids{});
}

TEST_F(ContextPromise, TimersExpireOnce) {
  promises("A stopped one-shot timer whose expiry calls owner.timerEvent(id)");
  const int id = startedTimer(1000);
  EXPECT_EQ(expiredAfter(hours{1}), Ids{id});
}

TEST_F(ContextPromise, TimersExpireAtTheirOwners) {
  promises("whose expiry calls owner.timerEvent(id) on the framework thread.");
  TimerOwner other;
  const int own = startedTimer(1000);
  const int others = context().createTimer(other, 1000);
  context().startTimer(others);
  EXPECT_EQ(expiredAfter(seconds{1}), Ids{own});
  EXPECT_EQ(other.expired, Ids{others});
}

TEST_F(ContextPromise, TimersExpireOnTheFrameworkThread) {
  promises("on the framework thread.");
  std::vector<std::thread::id> threads;
  m_owner.onTimer = [&](int /*timer*/) { threads.push_back(std::this_thread::get_id()); };
  const int other = timer(1000);
  std::thread([&] { context().startTimer(other); }).join();
  startedTimer(2000);
  pass(seconds{2});
  const auto own = std::this_thread::get_id();
  EXPECT_EQ(threads, (std::vector<std::thread::id>{own, own}));
}

TEST_F(ContextPromise, PeriodsAreMilliseconds) {
  promises("period: milliseconds from start to expiry.");
  const int id = startedTimer(1500);
  EXPECT_EQ(expiredAfter(milliseconds{1499}), Ids{});
  EXPECT_EQ(expiredAfter(milliseconds{1}), Ids{id});
}

// The clock saves its time every 12 hours.
TEST_F(ContextPromise, PeriodsMayBeLong) {
  promises("period: milliseconds from start to expiry.");
  const int id = startedTimer(43'200'000);
  startedTimer(4'294'967'295);
  EXPECT_EQ(expiredAfter(hours{12} - milliseconds{1}), Ids{});
  EXPECT_EQ(expiredAfter(milliseconds{1}), Ids{id});
}

TEST_F(ContextPromise, IdsArePositiveAndNotReusedSoon) {
  promises("The id is positive and not reused soon");
  std::set<int> ids;
  for (int i = 0; i < 100; ++i) {
    const int id = timer(1000);
    EXPECT_GT(id, 0);
    EXPECT_TRUE(ids.insert(id).second) << id;
    context().deleteTimer(id);
  }
}

TEST_F(ContextPromise, EqualExpiriesComeInOrderOfCreation) {
  promises("Equal expiries are delivered in order of creation.");
  const int first = timer(10'000);
  const int second = timer(10'000);
  const int third = timer(10'000);
  for (const int id : {third, first, second}) context().startTimer(id);
  EXPECT_EQ(expiredAfter(seconds{10}), (Ids{first, second, third}));
}

TEST_F(ContextPromise, EarlierExpiriesComeFirst) {
  promises("period: milliseconds from start to expiry.");
  const int late = startedTimer(20'000);
  const int early = startedTimer(10'000);
  EXPECT_EQ(expiredAfter(seconds{20}), (Ids{early, late}));
}

TEST_F(ContextPromise, StartArmsARunningTimerAgain) {
  promises("Arms the timer for its full period from now, also when it is already running.");
  const int id = startedTimer(10'000);
  pass(seconds{9});
  context().startTimer(id);
  EXPECT_EQ(expiredAfter(milliseconds{9999}), Ids{});
  EXPECT_EQ(expiredAfter(milliseconds{1}), Ids{id});
}

TEST_F(ContextPromise, AnExpiredTimerCanBeStartedInItsExpiry) {
  promises("Arms the timer for its full period from now");
  const int id = startedTimer(10'000);
  m_owner.onTimer = [&](int timer) {
    if (m_owner.expired.size() < 3) context().startTimer(timer);
  };
  EXPECT_EQ(expiredAfter(seconds{29}), (Ids{id, id}));
  EXPECT_EQ(expiredAfter(seconds{10}), (Ids{id, id, id}));
}

TEST_F(ContextPromise, AStoppedTimerCanBeStartedAgain) {
  promises("Disarms it; it may be started again.");
  for (const auto stop : {&Context::stopTimer, &Context::cancelTimer}) {
    m_owner.expired.clear();
    const int id = startedTimer(10'000);
    pass(seconds{4});
    (context().*stop)(id);
    EXPECT_EQ(expiredAfter(seconds{100}), Ids{});
    context().startTimer(id);
    EXPECT_EQ(expiredAfter(seconds{10}), Ids{id});
  }
}

TEST_F(ContextPromise, CancelDropsADueExpiry) {
  promises("Disarms it and drops an expiry that is due but not yet delivered.");
  const int first = startedTimer(10'000);
  const int due = startedTimer(10'000);
  m_owner.onTimer = [&](int /*timer*/) { context().cancelTimer(due); };
  EXPECT_EQ(expiredAfter(hours{1}), Ids{first});
}

TEST_F(ContextPromise, ADeletedTimerNeverExpires) {
  promises("Frees the timer. Its id never reaches timerEvent again.");
  const int first = startedTimer(10'000);
  const int due = startedTimer(10'000);
  const int running = startedTimer(20'000);
  m_owner.onTimer = [&](int timer) {
    for (const int id : {due, running, timer}) context().deleteTimer(id);
  };
  pass(hours{1});
  for (const int id : {first, due, running}) context().startTimer(id);
  EXPECT_EQ(expiredAfter(hours{1}), Ids{first});
}

TEST_F(ContextPromise, UnknownTimersAreIgnored) {
  promises("starting, stopping, cancelling or deleting an unknown timer does nothing.");
  const int deleted = startedTimer(10'000);
  const int known = startedTimer(20'000);
  context().deleteTimer(deleted);
  for (const int id : {deleted, 0, -1, known + 1, 1'000'000}) {
    context().startTimer(id);
    context().stopTimer(id);
    context().cancelTimer(id);
    context().deleteTimer(id);
  }
  EXPECT_EQ(expiredAfter(hours{1}), Ids{known});
}

// The listener of the NTP reports does so.
TEST_F(ContextPromise, AnyThreadMayUseTimersAndLookUpServices) {
  promises("Thread: any, for every operation.");
  context();
  int id = 0;
  std::thread([&] {
    const int deleted = startedTimer(10'000);
    id = startedTimer(10'000);
    context().deleteTimer(deleted);
    EXPECT_NE(context().getService("LocalMgmtIfc"), nullptr);
  }).join();
  EXPECT_EQ(expiredAfter(seconds{10}), Ids{id});
}

}  // namespace
