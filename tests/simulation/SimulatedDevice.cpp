#include "simulation/SimulatedDevice.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "Process.h"
#include "Threadable.h"
#include "Threader.h"
#include "framework/BoundedLookup.h"
#include "simulation/Tables.h"

simulation::SimulatedDevice& simulation::device() {
  static SimulatedDevice parts;
  return parts;
}

// Records the programs to start, with the TZ that they would get, and starts none.
struct Process::Impl {
  std::string line;
  bool running = false;
};

namespace {

std::string lineOf(int options, char* const* arguments, char* const* environment) {
  std::string line;
  for (; *arguments != nullptr; ++arguments) line += std::string(*arguments) + " ";
  std::string zone = "no TZ";
  for (; *environment != nullptr; ++environment)
    if (std::strncmp(*environment, "TZ=", 3) == 0) zone = *environment;
  const bool usual = options == Process::ownProcessGroup;
  return line + "under " + zone + (usual ? "" : " with options " + std::to_string(options));
}

std::thread& thread() {  // the service starts only one
  static std::thread one;
  return one;
}

}  // namespace

Process::Process(int options, char* const* arguments, char* const* environment, const char*)
    : m_impl(std::make_unique<Impl>(Impl{lineOf(options, arguments, environment)})) {}

Process::~Process() {
  if (m_impl->running) simulation::device().journal->add("client ends");
}

int Process::launch() {
  simulation::SimulatedDevice& device = simulation::device();
  m_impl->running = !device.launchFails;
  device.journal->add((m_impl->running ? "starts " : "cannot start ") + m_impl->line);
  return m_impl->running ? 4711 : -1;
}

bool Threader::spawn(unsigned long* threadId, Threadable* body, const char*, VotkThreadPriority,
                     int) {
  *threadId = 1;
  thread() = std::thread([body] { body->run(); });
  return true;
}

void Threader::waitForThreadCompletion(unsigned long) {
  if (simulation::device().beforeWaiting) simulation::device().beforeWaiting();
  if (thread().joinable()) thread().join();
}

void Threader::destroy(unsigned long threadId) {
  waitForThreadCompletion(threadId);
}

std::optional<std::string> host::boundedLookup(const std::string& name,
                                               std::chrono::milliseconds /*limit*/,
                                               Resolve /*resolve*/) {
  simulation::device().journal->add("looks up " + name);
  const std::string address = simulation::addressOf(name).resolved;
  if (simulation::device().lookupsFail || address.empty()) return std::nullopt;
  return address;
}

extern "C" {

void srand(unsigned int seed) noexcept {
  simulation::device().random.seed(seed);
}

int rand() noexcept {
  return simulation::device().random.next();
}

// Does nothing, to save time: a simulated power cut does not affect this machine's page cache.
int fsync(int) {
  return 0;
}
}
