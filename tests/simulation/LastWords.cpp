#include "simulation/LastWords.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>

namespace simulation {
namespace {

struct Fate {
  int signal;
  const char* what;
  struct sigaction former;
};

// Whatever a handler reads stands here, and is ready before the signal comes: in a handler nothing
// may be allocated or formatted.
std::array<Fate, 8> g_fates{{
    {SIGABRT, "the program aborted", {}},
    {SIGSEGV, "memory was missing", {}},
    {SIGBUS, "memory was missing", {}},
    {SIGFPE, "arithmetic failed", {}},
    {SIGILL, "an instruction was wrong", {}},
    {SIGALRM, "the step did not end", {}},
    {SIGTERM, "the program was ended", {}},
    {SIGINT, "the program was ended", {}},
}};
std::array<char, 600> g_place{};
std::array<char, PATH_MAX> g_folder{};
std::array<char, 65536> g_stack{};  // a life that recursed too deep has none left

void say(const char* text) {
  if (write(STDERR_FILENO, text, std::strlen(text)) < 0) return;
}

void removeFolder() {
  if (chdir(g_folder.data()) != 0) return;
  for (const char* const file :
       {"data/fallback_time.txt", "ipc/ntpclient", "state/setupTZ.sh", "state/.setupTZ.sh.new"}) {
    unlink(file);
  }
  for (const char* const folder : {"data", "ipc", "state"}) rmdir(folder);
  rmdir(g_folder.data());
}

// The signal is held back until this returns; then it does what it did before.
extern "C" void speak(int signal) {
  for (const Fate& fate : g_fates) {
    if (fate.signal != signal) continue;
    say("simulation: ");
    say(fate.what);
    say(g_place[0] == '\0' ? ", between two lives" : " in ");
    say(g_place.data());
    say("\n");
    sigaction(signal, &fate.former, nullptr);
  }
  removeFolder();
  raise(signal);
}

// A sanitizer may have laid one already.
void laySignalStack() {
  stack_t stack{};
  sigaltstack(nullptr, &stack);
  if ((stack.ss_flags & SS_DISABLE) == 0) return;
  stack = {};
  stack.ss_sp = g_stack.data();
  stack.ss_size = g_stack.size();
  sigaltstack(&stack, nullptr);
}

}  // namespace

LastWords::LastWords(const std::filesystem::path& folder) {
  std::snprintf(g_folder.data(), g_folder.size(), "%s", folder.c_str());
  laySignalStack();
  struct sigaction action {};
  action.sa_handler = speak;
  action.sa_flags = SA_ONSTACK;
  for (Fate& fate : g_fates) sigaction(fate.signal, &action, &fate.former);
}

LastWords::~LastWords() {
  for (const Fate& fate : g_fates) sigaction(fate.signal, &fate.former, nullptr);
}

WatchedLife::~WatchedLife() {
  alarm(0);
  g_place[0] = '\0';
}

void WatchedLife::begins(std::size_t step, const std::string& description) {
  const std::string life = m_seed ? "seed " + std::to_string(*m_seed) : "a life of given steps";
  std::snprintf(g_place.data(), g_place.size(), "%s, step %zu: %s", life.c_str(), step,
                description.c_str());
  alarm(kLongestStepSeconds);
}

}  // namespace simulation
