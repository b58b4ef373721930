// Replaces the platform's processes, threads and name lookups, so that nothing runs in the
// background: no program or thread is started, and every lookup fails at once.

#include "Process.h"
#include "Threader.h"
#include "framework/BoundedLookup.h"
#include "framework/PluginThread.h"

struct Process::Impl {};

Process::Process(int /*options*/, char* const* /*arguments*/, char* const* /*environment*/,
                 const char* /*workingFolder*/) {}

Process::~Process() = default;

int Process::launch() {
  constexpr int kProcessId = 4711;
  return kProcessId;
}

bool Threader::spawn(unsigned long* threadId, Threadable* /*body*/, const char* /*name*/,
                     VotkThreadPriority /*priority*/, int /*stackBytes*/) {
  *threadId = 1;
  return true;
}

void Threader::waitForThreadCompletion(unsigned long /*threadId*/) {}

void Threader::destroy(unsigned long /*threadId*/) {}

bool host::onPluginThread() {
  return false;
}

// These tests do not check durability, so they do not wait for the disk.
extern "C" int fsync(int /*descriptor*/) {
  return 0;
}

std::optional<std::string> host::boundedLookup(const std::string& /*name*/,
                                               std::chrono::milliseconds /*limit*/,
                                               Resolve /*resolve*/) {
  return std::nullopt;
}
