#include "ntpclient/ErrorLines.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "base/Descriptor.h"

namespace host::ntp {
namespace {

using namespace std::chrono_literals;

constexpr ErrorLines::Instant kBegin{};

// Writes error lines into a pipe, where a write blocks while the pipe is full.
class LinesIntoAPipe : public testing::Test {
 protected:
  static std::array<int, 2> newPipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    EXPECT_EQ(::fcntl(ends[0], F_SETFL, O_NONBLOCK), 0);
    return ends;
  }

  // All that was written since the last call.
  std::string text() {
    std::string all;
    std::array<char, 4096> part;
    for (ssize_t got = 0; (got = ::read(m_read.get(), part.data(), part.size())) > 0;) {
      all.append(part.data(), static_cast<std::size_t>(got));
    }
    return all;
  }

  const std::array<int, 2> m_ends = newPipe();
  const Descriptor m_read{m_ends[0]};
  const Descriptor m_written{m_ends[1]};
  ErrorLines m_lines{m_written.get()};
};

TEST_F(LinesIntoAPipe, ContainAnErrorOnceAnHourWithTheNumberOfItsRepeats) {
  for (int i = 0; i < 100; ++i) m_lines.complain("a", kBegin + i * 1s);
  m_lines.complain("b", kBegin);
  EXPECT_EQ(text(), "ntpclient: a\nntpclient: b\n");
  m_lines.complain("a", kBegin + ErrorLines::kQuiet - 1ns);
  EXPECT_EQ(text(), "");
  m_lines.complain("a", kBegin + ErrorLines::kQuiet);
  m_lines.complain("b", kBegin + ErrorLines::kQuiet);
  EXPECT_EQ(text(), "ntpclient: a; 100 more since the last such line\nntpclient: b\n");
}

TEST_F(LinesIntoAPipe, ContainEveryStep) {
  m_lines.step("asking");
  m_lines.step("asking");
  EXPECT_EQ(text(), "ntpclient: asking\nntpclient: asking\n");
}

TEST_F(LinesIntoAPipe, AreCountedWhileThePipeIsFull) {
  for (int i = 0; i < 10'000; ++i) m_lines.step("asking");
  m_lines.complain("a", kBegin);
  m_lines.complain("a", kBegin);
  EXPECT_EQ(text().find("ntpclient: a\n"), std::string::npos);
  m_lines.complain("a", kBegin);
  EXPECT_EQ(text(), "ntpclient: a; 2 more\n");
}

}  // namespace
}  // namespace host::ntp
