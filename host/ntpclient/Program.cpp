#include "ntpclient/Program.h"

#include <fcntl.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "clock/ClockMessage.h"
#include "ntpclient/Client.h"
#include "ntpclient/ErrorLines.h"
#include "ntpclient/PipeReport.h"
#include "ntpclient/SealedPath.h"
#include "ntpclient/SystemCallFilter.h"

namespace host::ntp {
namespace {

constexpr int kUsageError = 2;

std::string_view variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::optional<long> numberIn(std::string_view text, long most) {
  long number = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
  const bool fits = error == std::errc() && end == text.end() && number > 0 && number <= most;
  return fits ? std::optional(number) : std::nullopt;
}

std::optional<Environment> readEnvironment() {
  Environment environment;
  if (const auto port = variable("NTPCLIENT_PORT"); !port.empty()) {
    if (!numberIn(port, 65535)) return std::nullopt;
    environment.port = port;
  }
  if (const auto retry = variable("NTPCLIENT_RETRY_MS"); !retry.empty()) {
    const std::optional<long> wait = numberIn(retry, 3'600'000);
    if (!wait) return std::nullopt;
    environment.firstRetry = Backoff::Duration(*wait);
  }
  return environment;
}

// Invalid: there is none. Children of this program, if it had any, would not get it.
Descriptor clockChannel() {
  constexpr long kMost = 1'000'000;
  const std::optional<long> number = numberIn(variable(kClockChannelVariable), kMost);
  if (!number || ::fcntl(static_cast<int>(*number), F_SETFD, FD_CLOEXEC) != 0) return {};
  return Descriptor(static_cast<int>(*number));
}

std::filesystem::path reportPipe() {
  const std::string_view pipe = variable("CLOCKHOST_PIPE");
  return pipe.empty() ? kReportPipe : pipe;
}

// What a server sends is looked at with nothing at hand but what is needed. A kernel that has no
// filters is no reason not to serve, and the host's log says so.
void giveUpTheRest(const SealedPath& pipe, const Descriptor& channel) {
  const int error = installSystemCallFilter(pipe);
  if (error != 0) tellNoFilter(channel, error);
}

// Whatever the starting thread had blocked or ignored: SIGTERM ends the program at once.
void setSignals() {
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

int runProgram(int argumentCount, char* const* arguments) try {
  const std::span words(arguments, static_cast<std::size_t>(argumentCount));
  const auto assignment = parseCommandLine(words.empty() ? words : words.subspan(1));
  if (!assignment) return refuse(kUsage);
  auto environment = readEnvironment();
  if (!environment) return refuse("ntpclient: NTPCLIENT_PORT or NTPCLIENT_RETRY_MS is no number");
  Descriptor channel = clockChannel();
  if (!channel.valid()) return refuse("ntpclient: CLOCKHOST_CLOCK_FD is no descriptor of a host");
  setSignals();
  const ParentWatch watch;
  const SealedPath pipe(reportPipe());
  environment->pipe = pipe.get();
  unblockStandardError();
  giveUpTheRest(pipe, channel);
  const auto clock = makeHostClock(std::move(channel));
  return Client(*assignment, *environment, watch, *clock).run();
} catch (const Error& error) {
  std::fprintf(stderr, "ntpclient: %s\n", error.what());
  return 1;
}

}  // namespace host::ntp
