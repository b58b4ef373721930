#include "ntpclient/Program.h"

#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include "ntpclient/Client.h"
#include "ntpclient/PipeReport.h"

namespace host::ntp {
namespace {

constexpr int kUsageError = 2;

std::string_view environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::optional<long> numberIn(std::string_view text, long most) {
  long number = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
  const bool fits = error == std::errc() && end == text.end() && number > 0 && number <= most;
  return fits ? std::optional(number) : std::nullopt;
}

std::optional<Surroundings> readSurroundings() {
  Surroundings surroundings;
  if (const auto pipe = environment("CLOCKHOST_PIPE"); !pipe.empty()) surroundings.pipe = pipe;
  if (const auto port = environment("NTPCLIENT_PORT"); !port.empty()) {
    if (!numberIn(port, 65535)) return std::nullopt;
    surroundings.port = port;
  }
  if (const auto retry = environment("NTPCLIENT_RETRY_MS"); !retry.empty()) {
    const std::optional<long> wait = numberIn(retry, 3'600'000);
    if (!wait) return std::nullopt;
    surroundings.firstRetry = Backoff::Duration(*wait);
  }
  return surroundings;
}

std::unique_ptr<ClockSetter> chooseClock() {
  if (environment("CLOCKHOST_CLOCK") == "system") return makeSystemClock();
  const std::string_view socket = environment("CLOCKHOST_SOCKET");
  return socket.empty() ? nullptr : makeHostClock(socket);
}

// Whatever the starting thread had blocked or ignored: SIGTERM ends the program at once, and a
// listener that closes its pipe does not.
void setSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGTERM, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

int refuse(const char* why) {
  std::fprintf(stderr, "%s\n", why);
  return kUsageError;
}

}  // namespace

int runProgram(int argumentCount, char* const* arguments) {
  const std::span words(arguments, static_cast<std::size_t>(argumentCount));
  const auto assignment = parseCommandLine(words.empty() ? words : words.subspan(1));
  if (!assignment) return refuse(kUsage);
  const auto surroundings = readSurroundings();
  if (!surroundings) return refuse("ntpclient: NTPCLIENT_PORT or NTPCLIENT_RETRY_MS is no number");
  const auto clock = chooseClock();
  if (!clock) return refuse("ntpclient: CLOCKHOST_SOCKET does not name a host");
  setSignals();
  const ParentWatch watch;
  return Client(*assignment, *surroundings, watch, *clock).run();
}

}  // namespace host::ntp
