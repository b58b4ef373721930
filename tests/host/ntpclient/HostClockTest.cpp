#include "ntpclient/HostClock.h"

#include <cerrno>

#include "host/ntpclient/FakeClock.h"
#include "support/ErrorOf.h"

namespace host::ntp {
namespace {

using namespace std::chrono_literals;

class ClockOfTheHost : public testing::Test {
 protected:
  std::string errorOfSet() {
    return errorOf([this] { m_clock.set(1s); });
  }

  FakeClock m_host;
  const HostClock m_clock{Descriptor(::dup(m_host.clientsEnd()))};
};

TEST_F(ClockOfTheHost, IsSetToTheNanosecond) {
  m_clock.set(1780000000s + 1ns);
  m_clock.set(-1ns);
  const auto requests = m_host.requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_EQ(requests[0].seconds, 1'780'000'000);
  EXPECT_EQ(requests[0].nanoseconds, 1);
  EXPECT_EQ(requests[1].seconds, -1);
  EXPECT_EQ(requests[1].nanoseconds, 999'999'999);
}

TEST_F(ClockOfTheHost, CanBeSetAfterARefusal) {
  m_host.answerWith(EPERM);
  EXPECT_EQ(errorOfSet(), "the host refused: Operation not permitted");
  m_host.answerWith(0);
  m_clock.set(2s);
}

TEST_F(ClockOfTheHost, CannotBeSetWhenTheChannelIsClosed) {
  m_host.answerWith(-1);
  EXPECT_EQ(errorOfSet(), "the host has closed the channel");
  EXPECT_EQ(errorOfSet(), "the host is gone: Broken pipe");
  EXPECT_THROW(m_clock.set(1s), ChannelClosed);
}

}  // namespace
}  // namespace host::ntp
