// Remote calls are served while reports flood the pipe.
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
#include <thread>
#include <vector>

#include "base/Descriptor.h"
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

// One report as the NTP client makes it. Opening waits for the listener, so the flood is as fast as
// the service reads.
void report(const std::filesystem::path& pipe) {
  constexpr std::uint32_t kSecondsSinceEpoch = 1;
  const host::Descriptor writer(::open(pipe.c_str(), O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(writer.valid());
  // A listener that closes the pipe just now loses the report.
  if (::write(writer.get(), &kSecondsSinceEpoch, sizeof kSecondsSinceEpoch) < 0) {
    EXPECT_EQ(errno, EPIPE);
  }
}

double callDuration(host::RemoteClient& client) {
  Method method("getTime", Method::call);
  const auto begin = Clock::now();
  EXPECT_TRUE(client.call(method, kLimit));
  return Microseconds(Clock::now() - begin).count();
}

double percentile(std::vector<double> numbers, std::size_t percent) {
  const auto at = static_cast<std::ptrdiff_t>(numbers.size() * percent / 100);
  std::nth_element(numbers.begin(), numbers.begin() + at, numbers.end());
  return numbers[static_cast<std::size_t>(at)];
}

double quietP99(host::RemoteClient& client) {
  std::vector<double> durations;
  for (int i = 0; i < kQuietCalls; ++i) durations.push_back(callDuration(client));
  return percentile(std::move(durations), 99);
}

double p99During(host::RemoteClient& client, const std::filesystem::path& pipe, int reports) {
  std::atomic<bool> over = false;
  std::thread flood([&] {
    for (int i = 0; i < reports; ++i) report(pipe);
    over = true;
  });
  std::vector<double> durations;
  while (!over) durations.push_back(callDuration(client));
  flood.join();
  return percentile(std::move(durations), 99);
}

// The flood comes in parts, and their median counts: other work of the machine may disturb a few.
TEST(ReportFlood, DoesNotStarveRemoteCalls) {
  constexpr int kParts = 5;
  std::signal(SIGPIPE, SIG_IGN);  // writing to a pipe without a reader fails instead
  RunningHost host;
  host::RemoteClient client(host.socket());
  std::vector<double> ratios;
  for (int part = 0; part < kParts; ++part) {
    const double quiet = quietP99(client);
    const double flooded = p99During(client, host.pipe(), kReports / kParts);
    std::printf("p99 of getTime: quiet %.0f us, flooded %.0f us\n", quiet, flooded);
    ratios.push_back(flooded / quiet);
  }
  // Under a sanitizer the figures are those of its own locks and tables.
  if (support::kThreadSanitizer || support::kAddressSanitizer) return;
  EXPECT_LT(percentile(std::move(ratios), 50), 10.0);
}

}  // namespace
}  // namespace integration
