// The host's stand-in for the device's NTP client. Environment variables:
//   CLOCKHOST_CLOCK_FD  the inherited descriptor through which the host's clock is set
//   CLOCKHOST_PIPE      where to report a set clock, instead of the device's path
//   NTPCLIENT_PORT      the server's port, 123
//   NTPCLIENT_RETRY_MS  the shortest wait before another attempt, for tests: 15000
// Exit status: 2 for a wrong command line or environment, else that of Client::run.
#include <fcntl.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/ProgramStart.h"
#include "base/Version.h"
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

// Invalid when there is none.
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

// SIGTERM ends the program at once, even if the parent had blocked or ignored it.
void acceptTermination() {
  std::signal(SIGTERM, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

int refuse(const char* why) {
  std::fprintf(stderr, "%s\n", why);
  return kUsageError;
}

// The exit status after --version or --help, which stand alone.
std::optional<int> answered(std::span<char* const> words) {
  const std::string_view word = words.size() == 1 ? words.front() : "";
  if (word != "--version" && word != "--help") return std::nullopt;
  std::printf("%s\n", word == "--version" ? kVersion : kUsage);
  if (std::fflush(stdout) == 0) return 0;
  std::fprintf(stderr, "ntpclient: cannot write everything to standard output: %s\n",
               std::strerror(errno));
  return 1;
}

int run(std::span<char* const> words) try {
  if (const auto status = answered(words)) return *status;
  const auto assignment = parseCommandLine(words);
  if (!assignment) return refuse(kUsage);
  auto environment = readEnvironment();
  if (!environment) {
    return refuse("ntpclient: NTPCLIENT_PORT or NTPCLIENT_RETRY_MS is not a valid number");
  }
  Descriptor channel = clockChannel();
  if (!channel.valid()) return refuse("ntpclient: CLOCKHOST_CLOCK_FD is not a descriptor");
  acceptTermination();
  const ParentWatch watch;
  const SealedPath pipe(reportPipe());
  environment->pipe = pipe.get();
  unblockStandardError();
  const HostClock clock(std::move(channel));
  // A kernel without filters is no reason not to serve; the host logs it.
  if (const int error = installSystemCallFilter(pipe); error != 0) clock.reportMissingFilter(error);
  return Client(*assignment, *environment, watch, [&](auto time) { clock.set(time); }).run();
} catch (const Error& error) {
  std::fprintf(stderr, "ntpclient: %s\n", error.what());
  return 1;
}

}  // namespace
}  // namespace host::ntp

int main(int argumentCount, char* arguments[]) {
  host::startProgram();
  const std::span words(arguments, static_cast<std::size_t>(argumentCount));
  return host::ntp::run(words.empty() ? words : words.subspan(1));
}
