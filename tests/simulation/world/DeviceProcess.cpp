// The platform's Process, for a device whose programs are only written down.

#include <cstring>
#include <string>

#include "Process.h"
#include "simulation/world/DeviceParts.h"

struct Process::Impl {
  std::string line;
  bool running = false;
};

namespace {

constexpr char kZone[] = "TZ=";

std::string zoneIn(char* const* environment) {
  for (; *environment != nullptr; ++environment) {
    if (std::strncmp(*environment, kZone, sizeof kZone - 1) == 0) return *environment;
  }
  return "no TZ";
}

std::string lineOf(int options, char* const* arguments, char* const* environment,
                   const char* folder) {
  std::string line;
  for (; *arguments != nullptr; ++arguments) line += std::string(*arguments) + " ";
  line += "under " + zoneIn(environment);
  if (options != Process::ownProcessGroup) line += " with options " + std::to_string(options);
  return folder == nullptr ? line : line + " in " + folder;
}

}  // namespace

Process::Process(int options, char* const* arguments, char* const* environment,
                 const char* workingFolder)
    : m_impl(std::make_unique<Impl>(
          Impl{lineOf(options, arguments, environment, workingFolder), false})) {}

Process::~Process() {
  if (m_impl->running) simulation::deviceParts().journal->add("client ends");
}

int Process::launch() {
  constexpr int processId = 4711;
  simulation::DeviceParts& parts = simulation::deviceParts();
  m_impl->running = !parts.launchFails;
  parts.journal->add((m_impl->running ? "starts " : "cannot start ") + m_impl->line);
  return m_impl->running ? processId : -1;
}
