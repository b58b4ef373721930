// Faults in semaphores, threads, processes and lookups. The linker replaces NAME by __wrap_NAME;
// __real_NAME is the original.
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "NetHelper.h"
#include "Process.h"
#include "Semaphore.h"
#include "Threadable.h"
#include "Threader.h"
#include "conformance/Violation.h"

namespace {

using conformance::Violation;

const Violation kTakesInTheEnd("SemaphorePromise.TakeEndsWhenTheTimeRanOut",
                               "a take whose time ran out says that it took a count");
const Violation kDoesNotWait("SemaphorePromise.TakeWithoutLimitWaitsForACount",
                             "a take without limit does not wait");
const Violation kNoMaximum("SemaphorePromise.DropsACountAboveTheMaximum",
                           "counts above the maximum are kept");
const Violation kLostGive("SemaphorePromise.LocksOutOtherThreads", "a give is lost",
                          Violation::kHangs);
const Violation kOneLess("SemaphorePromise.CanBeTakenUpToItsInitialCount",
                         "the initial count is one too low");

const Violation kNoThread("ThreaderPromise.RunsTheBodyOnANewThread",
                          "the body runs on the caller's thread");
const Violation kLateId("ThreaderPromise.StoresTheIdBeforeTheBodyRuns",
                        "the id is stored when the body has returned");
const Violation kClearedId("ThreaderPromise.FailureLeavesTheIdUntouched",
                           "a failed spawn clears the id");
const Violation kSmallStack("ThreaderPromise.GivesTheThreadItsStack", "the stack size is ignored");
const Violation kNoWait("ThreaderPromise.WaitsUntilTheBodyHasReturned",
                        "waiting for a thread returns at once");
const Violation kDetached("ThreaderPromise.DestroyWaitsForARunningThread",
                          "destroy detaches a running thread");

const Violation kNoGroup("ProcessPromise.LeadsAGroupOfItsOwn",
                         "the child gets no group of its own");
const Violation kDescriptors("ProcessPromise.InheritsOnlyTheStandardDescriptors",
                             "the child inherits all descriptors");
const Violation kOwnEnvironment("ProcessPromise.PassesTheEnvironmentAndNoMore",
                                "the child inherits the environment");
const Violation kNoFolder("ProcessPromise.RunsInItsFolder", "the folder is ignored");
const Violation kAlwaysLaunched("ProcessPromise.LaunchFailsWithoutAProgram",
                                "launch hides a failure");
const Violation kLivesOn("ProcessPromise.DestructionEndsAndReapsTheChild",
                         "the child survives its handle");
const Violation kZombie("ProcessPromise.DestructionReapsAChildThatHasEnded",
                        "a child that has ended is not reaped");
const Violation kOnlyTheChild("ProcessPromise.DestructionEndsTheGroup",
                              "the child's own children survive");

const Violation kAnyAddress("NetHelperPromise.DistinguishesKindsOfAddresses",
                            "IPv4 and IPv6 addresses have the same number");
const Violation kClearedBuffer("NetHelperPromise.LeavesTheBufferUntouchedWithoutAnAddress",
                               "a failed lookup clears the buffer");
const Violation kOverflow("NetHelperPromise.DoesNotWriteBeyondTheBuffer",
                          "a lookup writes beyond a small buffer");

constexpr unsigned long kNoThreadsId = 1'000'000;

// A Process that outlives its destructor, until the end of the program.
alignas(Process) std::array<std::byte, sizeof(Process)> g_kept;

}  // namespace

extern "C" {

void __real__ZN9SemaphoreC1Eiib(Semaphore* self, int initial, int maximum, bool interProcess);
void __wrap__ZN9SemaphoreC1Eiib(Semaphore* self, int initial, int maximum, bool interProcess) {
  if (kOneLess.on()) --initial;
  if (kNoMaximum.on()) maximum += 100;
  __real__ZN9SemaphoreC1Eiib(self, initial, maximum, interProcess);
}

void __real__ZN9Semaphore4giveEv(Semaphore* self);
void __wrap__ZN9Semaphore4giveEv(Semaphore* self) {
  if (!kLostGive.on()) __real__ZN9Semaphore4giveEv(self);
}

bool __real__ZN9Semaphore4takeEi(Semaphore* self, int timeout);
bool __wrap__ZN9Semaphore4takeEi(Semaphore* self, int timeout) {
  if (kDoesNotWait.on()) timeout = 0;
  const bool taken = __real__ZN9Semaphore4takeEi(self, timeout);
  return taken || kTakesInTheEnd.on() || kDoesNotWait.on();
}

void __real__ZN8Threader23waitForThreadCompletionEm(Threader* self, unsigned long id);
void __wrap__ZN8Threader23waitForThreadCompletionEm(Threader* self, unsigned long id) {
  if (!kNoWait.on()) __real__ZN8Threader23waitForThreadCompletionEm(self, id);
}

bool __real__ZN8Threader5spawnEPmP10ThreadablePKc18VotkThreadPriorityi(
    Threader* self, unsigned long* id, Threadable* body, const char* name,
    VotkThreadPriority priority, int stack);
bool __wrap__ZN8Threader5spawnEPmP10ThreadablePKc18VotkThreadPriorityi(
    Threader* self, unsigned long* id, Threadable* body, const char* name,
    VotkThreadPriority priority, int stack) {
  if (kNoThread.on()) {
    *id = kNoThreadsId;
    body->run();
    return true;
  }
  unsigned long own = 0;
  const bool spawned = __real__ZN8Threader5spawnEPmP10ThreadablePKc18VotkThreadPriorityi(
      self, kLateId.on() ? &own : id, body, name, priority, kSmallStack.on() ? 0 : stack);
  if (kLateId.on()) {
    __real__ZN8Threader23waitForThreadCompletionEm(self, own);
    *id = own;
  }
  if (!spawned && kClearedId.on()) *id = 0;
  return spawned;
}

void __real__ZN8Threader7destroyEm(Threader* self, unsigned long id);
void __wrap__ZN8Threader7destroyEm(Threader* self, unsigned long id) {
  if (!kDetached.on()) return __real__ZN8Threader7destroyEm(self, id);
  std::thread([id] {
    Threader threader;
    __real__ZN8Threader7destroyEm(&threader, id);
  }).detach();
}

void __real__ZN7ProcessC1EiPKPcS2_PKc(Process* self, int options, char* const* arguments,
                                      char* const* environment, const char* folder);
void __wrap__ZN7ProcessC1EiPKPcS2_PKc(Process* self, int options, char* const* arguments,
                                      char* const* environment, const char* folder) {
  if (kNoGroup.on() || kDescriptors.on()) options = 0;
  if (kOwnEnvironment.on()) environment = environ;
  if (kNoFolder.on()) folder = nullptr;
  __real__ZN7ProcessC1EiPKPcS2_PKc(self, options, arguments, environment, folder);
}

void __real__ZN7ProcessD1Ev(Process* self);
void __wrap__ZN7ProcessD1Ev(Process* self) {
  if (!kLivesOn.on()) return __real__ZN7ProcessD1Ev(self);
  std::memcpy(g_kept.data(), static_cast<const void*>(self), sizeof(Process));
  std::at_quick_exit([] { __real__ZN7ProcessD1Ev(reinterpret_cast<Process*>(g_kept.data())); });
}

pid_t __real_waitpid(pid_t pid, int* status, int options);
pid_t __wrap_waitpid(pid_t pid, int* status, int options) {
  return kZombie.on() && pid > 0 ? pid : __real_waitpid(pid, status, options);
}

int __real_kill(pid_t pid, int signal);
int __wrap_kill(pid_t pid, int signal) {
  if (!kOnlyTheChild.on() || pid >= 0) return __real_kill(pid, signal);
  static pid_t group;
  group = pid;
  std::at_quick_exit([] { __real_kill(group, SIGKILL); });
  return __real_kill(-pid, signal);
}

int __real__ZN7Process6launchEv(Process* self);
int __wrap__ZN7Process6launchEv(Process* self) {
  const int pid = __real__ZN7Process6launchEv(self);
  return pid <= 0 && kAlwaysLaunched.on() ? 1 : pid;
}

int __real__ZN9NetHelper15verifyIpAddressERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEb(
    const std::string& text, bool allowPort);
int __wrap__ZN9NetHelper15verifyIpAddressERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEb(
    const std::string& text, bool allowPort) {
  const int kind =
      __real__ZN9NetHelper15verifyIpAddressERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEb(
          text, allowPort);
  return kAnyAddress.on() && kind != 0 ? 1 : kind;
}

bool __real__ZN9NetHelper9dnsLookupEPKcPcii(const char* name, char* buffer, int size, int family);
bool __wrap__ZN9NetHelper9dnsLookupEPKcPcii(const char* name, char* buffer, int size, int family) {
  const int claimed = kOverflow.on() ? 46 : size;
  const bool found = __real__ZN9NetHelper9dnsLookupEPKcPcii(name, buffer, claimed, family);
  if (!found && kClearedBuffer.on()) *buffer = '\0';
  return found;
}

}  // extern "C"
