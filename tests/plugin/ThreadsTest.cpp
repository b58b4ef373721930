// The listener's thread: how it starts and ends, and what happens if it cannot be created.

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <string>

#include "Threadable.h"
#include "Threader.h"
#include "support/LogCapture.h"
#include "support/OpenWatch.h"
#include "support/Telephone.h"

namespace {

bool g_refused = false;
std::atomic<int> g_created{0};
std::atomic<int> g_joined{0};
int g_awaited = 0;
int g_destroyed = 0;
std::string g_spawned;  // name, priority and stack of the last one

}  // namespace

// The linker replaces these functions of the system and of Threader.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __real_pthread_join(pthread_t, void**);
int __wrap_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_join(pthread_t, void**);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument) {
  if (g_refused) return EAGAIN;
  ++g_created;
  return __real_pthread_create(thread, attributes, body, argument);
}

int __wrap_pthread_join(pthread_t thread, void** result) {
  ++g_joined;
  return __real_pthread_join(thread, result);
}

void __real__ZN8Threader23waitForThreadCompletionEm(Threader*, unsigned long);
void __wrap__ZN8Threader23waitForThreadCompletionEm(Threader*, unsigned long);

void __wrap__ZN8Threader23waitForThreadCompletionEm(Threader* threader, unsigned long id) {
  __real__ZN8Threader23waitForThreadCompletionEm(threader, id);
  EXPECT_EQ(g_joined, 0);
  ++g_awaited;
}

void __real__ZN8Threader7destroyEm(Threader*, unsigned long);
void __wrap__ZN8Threader7destroyEm(Threader*, unsigned long);

void __wrap__ZN8Threader7destroyEm(Threader* threader, unsigned long id) {
  ++g_destroyed;
  __real__ZN8Threader7destroyEm(threader, id);
}

bool __real__ZN8Threader5spawnEPmP10ThreadablePKc18VotkThreadPriorityi(Threader*, unsigned long*,
                                                                       Threadable*, const char*,
                                                                       VotkThreadPriority, int);
bool __wrap__ZN8Threader5spawnEPmP10ThreadablePKc18VotkThreadPriorityi(Threader*, unsigned long*,
                                                                       Threadable*, const char*,
                                                                       VotkThreadPriority, int);

bool __wrap__ZN8Threader5spawnEPmP10ThreadablePKc18VotkThreadPriorityi(
    Threader* threader, unsigned long* id, Threadable* body, const char* name,
    VotkThreadPriority priority, int stack) {
  g_spawned = std::string(name) + " " + std::to_string(priority) + " " + std::to_string(stack);
  return __real__ZN8Threader5spawnEPmP10ThreadablePKc18VotkThreadPriorityi(threader, id, body, name,
                                                                           priority, stack);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

class ClockWithoutAThread : public testing::Test {
 protected:
  ClockWithoutAThread() {
    g_refused = true;
    telephone.switchOn();
    g_refused = false;
  }

  support::LogCapture log{6};
  support::Telephone telephone;
};

TEST_F(ClockWithoutAThread, LogsAnErrorAndKeepsTheTime) {
  EXPECT_TRUE(log.has(2, "NTP Client Thread couldn't be started"));
  EXPECT_FALSE(log.hasPart("NTP Client Thread has been started"));
  EXPECT_TRUE(telephone.manage("simple-time", "10:11"));
  EXPECT_EQ(telephone.service().getTime(), "10:11");
}

TEST_F(ClockWithoutAThread, EndsWithoutOpeningThePipe) {
  telephone.pipe.release();
  support::makeReportPipe();
  const support::OpenWatch watch(support::ListenerPipe::path());
  g_destroyed = 0;
  telephone.switchOff();
  EXPECT_FALSE(watch.sees());
  EXPECT_EQ(g_destroyed, 0);
}

TEST(ClockWithAThread, CreatesItOnceAndAwaitsAndJoinsItAtTheEnd) {
  support::Telephone telephone;
  g_created = g_joined = g_awaited = 0;
  telephone.switchOn();
  EXPECT_EQ(g_created, 1);
  EXPECT_EQ(g_spawned, "SNTP Recognition Thread 1 0");
  telephone.switchOff();
  EXPECT_EQ(g_awaited, 1);
  EXPECT_EQ(g_joined, 1);
}

}  // namespace
