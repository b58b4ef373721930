#include "remote/EventStamp.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "clock/VirtualClock.h"
#include "host/remote/ServerUnderTest.h"
#include "support/ZoneGuard.h"

namespace host {
namespace {

using std::chrono::hours;
using std::chrono::seconds;

std::string bytesOf(EventStamp time) {
  const EventStampBytes bytes = encodeEventStamp(time);
  return {bytes.data(), bytes.size()};
}

TEST(EventStamp, IsTwoNumbersBigEndian) {
  EXPECT_EQ(bytesOf({seconds(0x0102030405), seconds(0x06070809)}),
            std::string("\0\0\0\1\2\3\4\5\6\7\x08\x09", kEventStampSize));
  EXPECT_EQ(bytesOf({seconds(0), seconds(-2)}),
            std::string("\0\0\0\0\0\0\0\0\xff\xff\xff\xfe", kEventStampSize));
}

TEST(EventStamp, IsReadUpToTheLastThatAClockShows) {
  constexpr std::int64_t kLast = 9'223'372'036;
  for (const std::int64_t utc : {std::int64_t{0}, kLast}) {
    const auto time = decodeEventStamp(bytesOf({seconds(utc), -hours(5)}) + "event");
    ASSERT_TRUE(time) << utc;
    EXPECT_EQ(time->utc, seconds(utc));
    EXPECT_EQ(time->offset, -hours(5));
  }
  for (const std::int64_t utc : {std::int64_t{-1}, kLast + 1, INT64_MAX, INT64_MIN}) {
    EXPECT_FALSE(decodeEventStamp(bytesOf({seconds(utc), {}}))) << utc;
  }
  EXPECT_FALSE(decodeEventStamp(bytesOf({}).substr(1)));
}

class EventStampOfCodec : public ::testing::TestWithParam<std::string> {};

// The second event equals the first one but for its time, and is not encoded again.
TEST_P(EventStampOfCodec, ComesWithEachEventForClientsThatAskForIt) {
  const support::ZoneGuard zone("LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00");
  VirtualClock clock;
  const ProcessClock processClock(clock);
  ServerUnderTest server;
  RemoteClient plain(server.socket, GetParam());
  RemoteClient timed(server.socket, GetParam(), RemoteClient::Events::timed);
  EXPECT_TRUE(observe(plain) && observe(timed));
  const seconds summer(1'772'953'200);  // the change is at this instant
  ASSERT_TRUE(clock.setWall(summer - seconds(1), VirtualClock::Setter::hand));
  ASSERT_TRUE(clock.setWall(seconds(5)));  // which the telephone does not show
  Method event("event", Method::call);
  EXPECT_EQ(server.device.notify(event), 2);
  clock.advance(std::chrono::milliseconds(1500));
  EXPECT_EQ(server.device.notify(event), 2);
  EXPECT_FALSE(plain.nextReceivedEvent(kLong)->time);
  const auto before = timed.nextReceivedEvent(kLong);
  const auto after = timed.nextReceivedEvent(kLong);
  ASSERT_TRUE(before && before->time && after && after->time);
  EXPECT_EQ(support::textOf(after->method), "call event\n");
  EXPECT_EQ(before->time->utc, summer - seconds(1));
  EXPECT_EQ(before->time->offset, -hours(5));
  EXPECT_EQ(after->time->utc, summer);
  EXPECT_EQ(after->time->offset, -hours(4));
}

INSTANTIATE_TEST_SUITE_P(Each, EventStampOfCodec, ::testing::ValuesIn(CodecTable::names()));

// Without a clock the host runs on the machine's time.
TEST(EventStamp, IsTheMachinesWithoutAClock) {
  const seconds before(std::time(nullptr));
  const EventStamp now = eventStampNow();
  EXPECT_GE(now.utc, before);
  EXPECT_LE(now.utc, seconds(std::time(nullptr)));
}

}  // namespace
}  // namespace host
