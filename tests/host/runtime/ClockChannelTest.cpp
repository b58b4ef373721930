#include "runtime/ClockChannel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "base/IoLoop.h"
#include "clock/VirtualClock.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"
#include "support/OpenDescriptors.h"

namespace host {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

class OpenClockChannel : public testing::Test {
 protected:
  OpenClockChannel() { EXPECT_TRUE(m_channel.valid()); }

  void send(const void* bytes, std::size_t size) {
    EXPECT_EQ(::send(m_channel.get(), bytes, size, MSG_NOSIGNAL), static_cast<ssize_t>(size));
    m_loop.runAllReady();
  }
  void send(const SetClockRequest& request) { send(&request, sizeof request); }

  // The host's answer; -1 when it has closed the channel; nothing when it has done neither.
  std::optional<int> answer() {
    SetClockAnswer answer{};
    const ssize_t got = ::recv(m_channel.get(), &answer, sizeof answer, MSG_DONTWAIT);
    if (got < 0) return std::nullopt;
    return got == sizeof answer ? answer.error : -1;
  }

  IoLoop m_loop;
  VirtualClock m_clock;
  std::atomic<bool> m_filterMissed = false;
  Descriptor m_channel = openClockChannel(m_loop, m_clock, m_filterMissed);
};

TEST_F(OpenClockChannel, SetsTheClockToTheNanosecondAndAnswers) {
  send(SetClockRequest{1'000'000'000, 999'999'999});
  EXPECT_EQ(answer(), 0);
  EXPECT_EQ(m_clock.wall(), nanoseconds(1'000'000'000'999'999'999));
  send(SetClockRequest{0, 0});
  EXPECT_EQ(answer(), 0);
  EXPECT_EQ(m_clock.wall(), nanoseconds(0));
}

TEST_F(OpenClockChannel, HandlesOneMessagePerTurnOfTheLoop) {
  m_loop.runAllReady();  // starts to serve
  for (const std::int64_t second : {1, 2, 3}) {
    const SetClockRequest request{second, 0};
    ASSERT_EQ(::send(m_channel.get(), &request, sizeof request, 0), 16);
  }
  for (const int second : {1, 2, 3}) {
    m_loop.runOne();
    EXPECT_EQ(m_clock.wall(), seconds(second));
  }
}

TEST_F(OpenClockChannel, EndsWhenTheClientDisconnects) {
  send(SetClockRequest{5, 0});
  m_channel.reset();
  m_loop.runAllReady();
  EXPECT_EQ(m_clock.wall(), seconds(5));
}

TEST_F(OpenClockChannel, IsNotInheritedByOtherPrograms) {
  EXPECT_EQ(::fcntl(m_channel.get(), F_GETFD), FD_CLOEXEC);
}

TEST_F(OpenClockChannel, IsServedOrClosedWhenMemoryRunsOutAtItsStart) {
  const support::LogCapture log;  // so that log lines need memory, as in a host
  std::size_t allocations = 0;
  for (bool ranOut = true; ranOut; ++allocations) {
    SCOPED_TRACE(allocations);
    m_channel = openClockChannel(m_loop, m_clock, m_filterMissed);
    {
      const support::NoMemory none(allocations);
      EXPECT_NO_THROW(m_loop.runAllReady());
      ranOut = support::NoMemory::ranOut();
    }
    const auto ended = answer();
    EXPECT_EQ(ended, ranOut ? std::optional(-1) : std::nullopt);
    if (ended) continue;
    send(SetClockRequest{7, 0});
    EXPECT_EQ(answer(), 0);
  }
  EXPECT_GT(allocations, 1U);
}

TEST_F(OpenClockChannel, CannotBeOpenedWithoutMemory) {
  const auto before = support::openDescriptors();
  for (const std::size_t allocations : {0U, 1U}) {
    Descriptor channel;
    int error = 0;
    {
      const support::NoMemory none(allocations);
      EXPECT_NO_THROW(channel = openClockChannel(m_loop, m_clock, m_filterMissed));
      error = errno;
    }
    EXPECT_FALSE(channel.valid());
    EXPECT_EQ(error, ENOMEM);
    EXPECT_EQ(support::openDescriptors(), before);
  }
}

TEST_F(OpenClockChannel, LogsOnceThatClientsHaveNoSystemCallFilter) {
  const support::LogCapture log(3);
  const NoFilterNotice notice{ENOSYS};
  for (int i = 0; i < 3; ++i) {
    m_channel = openClockChannel(m_loop, m_clock, m_filterMissed);
    send(&notice, sizeof notice);
    EXPECT_EQ(answer(), std::nullopt) << "a notice has no answer";
    send(SetClockRequest{1, 0});
    EXPECT_EQ(answer(), 0) << "the client is still served";
  }
  EXPECT_EQ(log.entries().size(), 1U) << log.text();
  EXPECT_TRUE(
      log.has("the NTP client runs without a system call filter: Function not implemented"));
}

struct InvalidRequest {
  std::string name;
  SetClockRequest request;
  std::size_t size = sizeof(SetClockRequest);
};

TEST_F(OpenClockChannel, ClosesWithOneLogLineAfterAnInvalidMessage) {
  const InvalidRequest rows[] = {
      {"a nanosecond before 1970", {0, -1}},
      {"a whole second of nanoseconds", {5, 1'000'000'000}},
      {"before 1970", {-1, 0}},
      {"beyond the last time", {8'000'000'000, 0}},
      {"the greatest number", {INT64_MAX, INT64_MAX}},
      {"the least number", {INT64_MIN, INT64_MIN}},
      {"one byte", {5, 0}, 1},
      {"a notice without a reason", {0, 0}, sizeof(NoFilterNotice)},
      {"a byte less", {5, 0}, sizeof(SetClockRequest) - 1},
      {"a byte more", {5, 0}, sizeof(SetClockRequest) + 1},
      {"many more", {5, 0}, 4096},
  };
  for (const InvalidRequest& row : rows) {
    SCOPED_TRACE(row.name);
    const support::LogCapture log(4);
    m_channel = openClockChannel(m_loop, m_clock, m_filterMissed);
    Descriptor other = openClockChannel(m_loop, m_clock, m_filterMissed);
    std::array<char, 4096> bytes{};
    std::memcpy(bytes.data(), &row.request, sizeof row.request);
    send(bytes.data(), row.size);
    EXPECT_EQ(answer(), -1);
    EXPECT_EQ(m_clock.wall(), seconds(0));
    EXPECT_EQ(log.entries().size(), 1U) << log.text();
    EXPECT_TRUE(log.has("the NTP client's channel is closed: it sent an invalid message"));
    m_channel = std::move(other);
    send(SetClockRequest{0, 0});
    EXPECT_EQ(answer(), 0) << "another client is still served";
  }
}

}  // namespace
}  // namespace host
