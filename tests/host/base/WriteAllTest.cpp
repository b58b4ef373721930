#include "base/WriteAll.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <string>
#include <thread>

#include "base/Descriptor.h"

namespace host {
namespace {

TEST(WriteAll, WaitsForRoomInANonBlockingPipe) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
  const Descriptor output(ends[0]);
  Descriptor input(ends[1]);
  ::fcntl(input.get(), F_SETFL, O_NONBLOCK);
  const std::string text(std::size_t{1} << 20, 'x');  // more than a pipe holds
  std::string all;
  std::thread reader([&] {
    std::array<char, 4096> part{};
    ssize_t size = 0;
    while ((size = ::read(output.get(), part.data(), part.size())) > 0) {
      all.append(part.data(), static_cast<std::size_t>(size));
    }
  });
  EXPECT_TRUE(writeAll(input.get(), text));
  input.reset();
  reader.join();
  EXPECT_EQ(all, text);
}

TEST(WriteAll, TellsWhyNotAllWasWritten) {
  const Descriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  EXPECT_FALSE(writeAll(full.get(), "lost"));
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_TRUE(writeAll(full.get(), ""));
}

}  // namespace
}  // namespace host
