#include "remote/Frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace host {
namespace {

using Outcome = FrameReader::Outcome;

void feed(FrameReader& reader, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto space = reader.space();
    const std::size_t part = std::min(space.size(), bytes.size());
    std::memcpy(space.data(), bytes.data(), part);
    reader.commit(part);
    bytes.remove_prefix(part);
  }
}

std::string announce(std::uint32_t length, char kind = 1) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(length >> shift);
  return bytes + kind;
}

TEST(Frame, IsLengthKindAndIdBigEndianAndThePayload) {
  EXPECT_EQ(encodeFrame({FrameKind::controlItem, 0x01020304, "ab"}),
            std::string("\0\0\0\7\6\1\2\3\4ab", 11));
}

TEST(FrameReader, ReadsAFrameThatIsSplitAtAnyByte) {
  const std::string bytes = encodeFrame({FrameKind::event, 0xfffffffe, "0123456789"});
  for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
    SCOPED_TRACE(cut);
    FrameReader reader;
    Frame frame;
    feed(reader, bytes.substr(0, cut));
    EXPECT_EQ(reader.next(frame), Outcome::needMore);
    EXPECT_EQ(reader.midFrame(), cut > 0);
    feed(reader, bytes.substr(cut));
    ASSERT_EQ(reader.next(frame), Outcome::frame);
    EXPECT_EQ(frame.kind, FrameKind::event);
    EXPECT_EQ(frame.id, 0xfffffffe);
    EXPECT_EQ(frame.payload, "0123456789");
    EXPECT_FALSE(reader.midFrame());
    EXPECT_EQ(reader.next(frame), Outcome::needMore);
  }
}

TEST(FrameReader, KeepsAPartialFrameWhileThoseBeforeItAreRemoved) {
  const std::string small = encodeFrame({FrameKind::call, 1, std::string(300, 's')});
  const std::string large = encodeFrame({FrameKind::call, 2, std::string(20000, 'l')});
  FrameReader reader;
  Frame frame;
  for (int round = 0; round < 50; ++round) {
    feed(reader, small + large.substr(0, 3000));
    ASSERT_EQ(reader.next(frame), Outcome::frame);
    EXPECT_EQ(frame.payload, std::string(300, 's'));
    ASSERT_EQ(reader.next(frame), Outcome::needMore);
    feed(reader, large.substr(3000));
    ASSERT_EQ(reader.next(frame), Outcome::frame);
    ASSERT_EQ(frame.payload, std::string(20000, 'l'));
  }
}

TEST(FrameReader, ReadsTheSmallestAndTheLargestPayload) {
  for (const std::size_t size : {std::size_t{0}, kMaxPayload}) {
    FrameReader reader;
    feed(reader, encodeFrame({FrameKind::reply, 1, std::string(size, 'z')}));
    Frame frame;
    ASSERT_EQ(reader.next(frame), Outcome::frame);
    EXPECT_EQ(frame.payload.size(), size);
  }
}

struct Broken {
  std::string bytes;
  std::string fault;
};

TEST(FrameReader, RefusesBytesThatAreNoFrame) {
  const Broken cases[] = {
      {announce(0), "frame of 0 bytes"},
      {announce(4), "frame of 4 bytes"},
      {announce(0x100001), "frame of 1048577 bytes announced, 1048576 is the limit"},
      {announce(0x40000000).substr(0, 4),
       "frame of 1073741824 bytes announced, 1048576 is the limit"},
      {announce(0xffffffff), "frame of 4294967295 bytes announced, 1048576 is the limit"},
      {"GET / HTTP/1.1\r\n", "frame of 1195725856 bytes announced, 1048576 is the limit"},
      {announce(5, 8), "frame of unknown kind 8"},
      {announce(5, '\xff'), "frame of unknown kind 255"},
  };
  for (const Broken& broken : cases) {
    SCOPED_TRACE(broken.fault);
    FrameReader reader;
    Frame frame;
    feed(reader, broken.bytes);
    EXPECT_EQ(reader.next(frame), Outcome::broken);
    EXPECT_EQ(reader.fault(), broken.fault);
    feed(reader, encodeFrame({FrameKind::call, 1, "good"}));
    EXPECT_EQ(reader.next(frame), Outcome::broken);
  }
}

TEST(FrameReader, AllocatesNothingForAnAnnouncedLength) {
  FrameReader reader;
  Frame frame;
  feed(reader, announce(kMaxFrameLength));
  EXPECT_EQ(reader.next(frame), Outcome::needMore);
  EXPECT_LT(reader.space().size(), 8192U);
}

TEST(FrameReader, FreesTheMemoryOfALargeFrame) {
  FrameReader reader;
  Frame frame;
  feed(reader, encodeFrame({FrameKind::call, 1, std::string(kMaxPayload, 'x')}));
  ASSERT_EQ(reader.next(frame), Outcome::frame);
  EXPECT_LT(reader.space().size(), 8192U);
}

}  // namespace
}  // namespace host
