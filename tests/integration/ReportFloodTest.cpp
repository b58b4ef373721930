// A flood of reports through the pipe: remote calls are served all the while.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <thread>
#include <vector>

#include "integration/RestartableHost.h"
#include "remote/RemoteClient.h"
#include "support/Sanitizers.h"

namespace integration {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::chrono::seconds kLimit(20);
constexpr int kReports = 100'000;
constexpr int kQuietCalls = 5'000;

// Writing to a pipe without a reader is to fail, not to end the program.
class ReportFlood : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { std::signal(SIGPIPE, SIG_IGN); }
};

// One report as the NTP client makes it: open, write, close. Opening waits for the listener, so the
// flood is as fast as the service takes it.
void report(const std::filesystem::path& pipe, std::uint32_t secondsSinceEpoch) {
  const int descriptor = ::open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  // The listener may just have closed the opening that this one joined; the report is then lost.
  if (::write(descriptor, &secondsSinceEpoch, sizeof secondsSinceEpoch) != 4) {
    EXPECT_EQ(errno, EPIPE);
  }
  ::close(descriptor);
}

double callDuration(host::RemoteClient& client) {
  Method method("getTime", Method::call);
  const auto begin = Clock::now();
  EXPECT_TRUE(client.call(method, kLimit));
  return Microseconds(Clock::now() - begin).count();
}

double p99(std::vector<double> durations) {
  const auto rank = durations.begin() + static_cast<std::ptrdiff_t>(durations.size() * 99 / 100);
  std::nth_element(durations.begin(), rank, durations.end());
  return *rank;
}

double quietP99(host::RemoteClient& client) {
  std::vector<double> durations;
  for (int i = 0; i < kQuietCalls; ++i) durations.push_back(callDuration(client));
  return p99(std::move(durations));
}

double p99During(host::RemoteClient& client, const std::filesystem::path& pipe, int reports) {
  std::atomic<bool> over = false;
  std::thread flood([&] {
    for (int i = 0; i < reports; ++i) report(pipe, static_cast<std::uint32_t>(i) + 1);
    over = true;
  });
  std::vector<double> durations;
  while (!over) durations.push_back(callDuration(client));
  flood.join();
  return p99(std::move(durations));
}

double median(std::vector<double> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

// The machine has other work to do, so the flood comes in parts, and the middle one of them counts:
// a few may have met with it.
TEST_F(ReportFlood, LeavesRemoteCallsTheirTime) {
  constexpr int kParts = 5;
  RunningHost host;
  host::RemoteClient client(host.socket());
  const auto pipe = host.pipe();
  ASSERT_TRUE(std::filesystem::exists(pipe)) << pipe;
  std::vector<double> times;
  for (int part = 0; part < kParts; ++part) {
    const double quiet = quietP99(client);
    const double flooded = p99During(client, pipe, kReports / kParts);
    std::printf("p99 of getTime: quiet %.0f us, flooded %.0f us\n", quiet, flooded);
    times.push_back(flooded / quiet);
  }
  // Under a sanitizer its own locks and tables are what is measured.
  if (support::kThreadSanitizer || support::kAddressSanitizer) return;
  EXPECT_LT(median(times), 10.0);
}

// What the pipe says is not believed: the clock itself is read.
TEST_F(ReportFlood, ReportsOfAbsurdTimesChangeNoTime) {
  RunningHost host;
  host::RemoteClient client(host.socket());
  const auto pipe = host.pipe();
  const std::string before = host.ctl({"get", "time"}).out;
  for (const std::uint32_t seconds : {0U, 1U, 0xFFFFFFFFU}) report(pipe, seconds);
  Method observe("observeTimeEvents", Method::call);
  ASSERT_TRUE(client.call(observe, kLimit));
  std::optional<Method> event;
  for (int tries = 0; !event && tries < 100; ++tries) {
    report(pipe, 1);
    event = client.nextEvent(std::chrono::milliseconds(200));
  }
  ASSERT_TRUE(event);
  EXPECT_EQ(host.ctl({"get", "time"}).out, before);
}

}  // namespace
}  // namespace integration
