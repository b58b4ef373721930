#include "runtime/ProgramLog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Logging.h"
#include "Process.h"
#include "base/WriteAll.h"
#include "framework/ProgramMap.h"
#include "support/Becomes.h"
#include "support/LogCapture.h"
#include "support/NoMemory.h"
#include "support/OpenDescriptors.h"

namespace host {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

class LoggedPrograms : public testing::Test {
 protected:
  LoggedPrograms() { ProgramMap::instance().allowDevicePrograms(); }
  ~LoggedPrograms() override { ProgramMap::instance().clear(); }

  void write(const std::string& text) {
    EXPECT_TRUE(writeAll(m_end.get(), text));
    m_loop.runAllReady();
  }

  [[nodiscard]] Texts said(std::string_view program = "client") const {
    Texts texts;
    for (const LogEntry& entry : m_log.entries()) {
      if (entry.component == program) texts.push_back(entry.text);
    }
    return texts;
  }

  // Starts a shell, whose name is the component of its lines.
  static std::unique_ptr<Process> shell(std::string script) {
    std::string program = "/bin/sh";
    std::string option = "-c";
    std::string path = "PATH=/bin";
    const std::array<char*, 4> words = {program.data(), option.data(), script.data(), nullptr};
    const std::array<char*, 2> environment = {path.data(), nullptr};
    auto child =
        std::make_unique<Process>(Process::ownProcessGroup, words.data(), environment.data());
    EXPECT_GT(child->launch(), 0);
    return child;
  }

  // Runs the loop until the text is in the log.
  bool logs(const std::string& part) {
    return support::becomesTrue([&] {
      m_loop.runAllReady();
      return m_log.hasPart(part);
    });
  }

  const support::LogCapture m_log{5};
  IoLoop m_loop;
  std::optional<ProgramLog> m_programs{std::in_place, m_loop};
  Descriptor m_end = m_programs->open("client");
};

TEST_F(LoggedPrograms, HaveOneEntryForEachLine) {
  write("one\ntw");
  EXPECT_EQ(said(), Texts{"one"});
  write("o\nclient: three\n\n");
  EXPECT_EQ(said(), (Texts{"one", "two", "three"}));
  const LogEntry entry = m_log.entries().front();
  EXPECT_EQ(entry.level, 4);
  EXPECT_EQ(entry.file, "");
}

TEST_F(LoggedPrograms, ChooseTheLevelByAPriority) {
  write("<0>a\n<1>b\n<3>client: c\n<4>d\n<5>e\n<6>f\n<7>not shown\n<8>g\n<x>h\n<3\n<3>\n");
  Texts levels;
  for (const LogEntry& entry : m_log.entries()) {
    levels.push_back(std::to_string(entry.level) + ' ' + entry.text);
  }
  EXPECT_EQ(levels, (Texts{"0 a", "0 b", "2 c", "3 d", "4 e", "5 f", "4 <8>g", "4 <x>h", "4 <3"}));
}

TEST_F(LoggedPrograms, ArePrintedOnOneLine) {
  write(std::string("a\0\x1B[31m\xFF \xC3\xA9\n", 12));
  EXPECT_EQ(said(), Texts{"a\\x00\\x1B[31m\\xFF \xC3\xA9"});
}

TEST_F(LoggedPrograms, HaveALongLineCut) {
  write(std::string(5000, 'x') + "\nnext\n");
  ASSERT_EQ(said().size(), 2U) << m_log.text();
  EXPECT_EQ(said()[0], std::string(1021, 'x') + "...");
  EXPECT_EQ(said()[1], "next");
}

TEST_F(LoggedPrograms, HaveTheirLastWordsLoggedWhenTheyEnd) {
  const auto before = support::openDescriptors();
  write("one\nlast");
  m_end.reset();
  m_loop.runAllReady();
  EXPECT_EQ(said(), (Texts{"one", "last"}));
  EXPECT_EQ(support::openDescriptors(), before - 2);
  EXPECT_EQ(m_loop.runAllReady(), 0U);
}

// Also of a program that has started just before.
TEST_F(LoggedPrograms, HaveTheirLastWordsLoggedWhenTheHostEnds) {
  const Descriptor other = m_programs->open("other");
  for (const int end : {m_end.get(), other.get()}) EXPECT_TRUE(writeAll(end, "one\nlast"));
  m_programs.reset();
  EXPECT_EQ(said(), (Texts{"one", "last"}));
  EXPECT_EQ(m_log.entries().size(), 4U) << m_log.text();
}

// As much is read as a pipe holds, unless it was made larger.
TEST_F(LoggedPrograms, DoNotDelayTheEndByWritingWithoutEnd) {
  constexpr int kMore = 256 * 1024;
  ASSERT_EQ(::fcntl(m_end.get(), F_SETPIPE_SZ, kMore), kMore);
  std::string text;
  while (text.size() < kMore) text += std::string(ProgramLog::kRead - 1, 'x') + '\n';
  ASSERT_TRUE(writeAll(m_end.get(), text));
  m_programs.reset();
  EXPECT_EQ(said().size(), 64U * 1024 / ProgramLog::kRead);
}

TEST_F(LoggedPrograms, TakeTurnsWithOtherWork) {
  m_loop.runAllReady();
  EXPECT_TRUE(writeAll(m_end.get(), std::string(3 * ProgramLog::kRead, '\n')));
  bool done = false;
  m_loop.post([&] { done = true; });
  m_loop.runOne();  // reads a part
  m_loop.runOne();
  EXPECT_TRUE(done);
  EXPECT_GT(m_loop.runAllReady(), 0U) << "there was nothing left to read";
}

TEST_F(LoggedPrograms, AreLimitedTogetherIfTheyHaveOneName) {
  std::string flood;
  for (int i = 0; i < 60; ++i) flood += std::to_string(i) + "\n<7>not shown\n";
  write(flood);
  EXPECT_EQ(said().size(), 60U);
  m_end = m_programs->open("client");
  write(flood);
  EXPECT_EQ(said().size(), ProgramLog::kMostLines);
  const Descriptor other = m_programs->open("other");
  EXPECT_TRUE(writeAll(other.get(), "another program\n"));
  m_loop.runAllReady();
  EXPECT_TRUE(m_log.has("another program"));
  m_programs.reset();
  EXPECT_TRUE(
      m_log.has(3, "20 lines suppressed of client: one program may write 100 lines in 10 s"))
      << m_log.text();
}

TEST_F(LoggedPrograms, HaveSuppressedLinesReportedAfterTheWindow) {
  m_programs.reset();
  m_programs.emplace(m_loop, LogLimitBySource(2, 20ms));
  m_end = m_programs->open("client");
  write("1\n2\n3\n4\n");
  EXPECT_TRUE(logs("2 lines suppressed of client")) << m_log.text();
  write("5\n");
  EXPECT_EQ(said().back(), "5");
}

TEST_F(LoggedPrograms, DoNotPushOtherEntriesOutOfTheLog) {
  const LogKeeper keeper;
  logAppUni("clockhost", 4, __FILE__, __LINE__, "note");
  m_programs.reset();
  m_programs.emplace(m_loop, LogLimitBySource(10'000));
  m_end = m_programs->open("client");
  for (int i = 0; i < 1000; ++i)
    write("<" + std::to_string(i % 2 + 5) + ">" + std::string(990, 'x') + "\n");
  write("last\n");
  const auto kept = ApplicationLog::instance().kept();
  EXPECT_EQ(kept.front().text, "note");
  EXPECT_EQ(kept.back().text, "last");
  EXPECT_LT(kept.size(), 100U);
}

TEST_F(LoggedPrograms, InheritOnlyTheirOwnEnd) {
  EXPECT_EQ(::fcntl(m_end.get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(::fcntl(m_end.get(), F_GETFL) & O_NONBLOCK, 0) << "a program expects it to block";
  const auto child = shell("ls /proc/self/fd");
  EXPECT_TRUE(logs("ended with status 0"));
  m_loop.runAllReady();  // its end may be logged before its lines
  EXPECT_EQ(said("sh"), (Texts{"0", "1", "2", "3"})) << "the last is that of the folder";
}

TEST_F(LoggedPrograms, MayCloseTheirStandardError) {
  const auto child = shell("echo one >&2; exec 1>&- 2>&-; sleep 1000");
  EXPECT_TRUE(logs("one"));
  EXPECT_TRUE(support::becomesTrue([&] { return m_loop.runAllReady() == 0; }));
}

// A process of its own session is not ended together with its parent.
TEST_F(LoggedPrograms, MayLeaveAProcessThatKeepsThePipe) {
  auto child = shell("setsid sh -c 'echo left $$; read -r word </dev/zero' & wait");
  ASSERT_TRUE(logs("left "));
  const std::string text = m_log.entries().back().text;
  child.reset();
  m_loop.runAllReady();
  EXPECT_EQ(::kill(std::stoi(text.substr(5)), SIGKILL), 0) << text;
}

TEST_F(LoggedPrograms, HaveALimitOfPipes) {
  std::vector<Descriptor> ends;
  for (std::size_t i = 1; i < ProgramLog::kMostPipes; ++i) {
    ends.push_back(m_programs->open("client"));
    EXPECT_TRUE(ends.back().valid());
  }
  EXPECT_FALSE(m_programs->open("client").valid());
  EXPECT_EQ(errno, EMFILE);
  m_loop.runAllReady();
  ends.pop_back();
  m_loop.runAllReady();
  EXPECT_TRUE(m_programs->open("client").valid());
}

TEST_F(LoggedPrograms, StartWithoutMemory) {
  const auto before = support::openDescriptors();
  const std::string name = "a program with a rather long name";
  for (std::size_t allocations = 0;; ++allocations) {
    Descriptor end;
    bool ranOut = false;
    int error = 0;
    {
      const support::NoMemory none(allocations);
      EXPECT_NO_THROW(end = m_programs->open(name));
      error = errno;
      ranOut = support::NoMemory::ranOut();
    }
    EXPECT_EQ(end.valid(), !ranOut) << allocations;
    if (!ranOut) break;
    EXPECT_EQ(error, ENOMEM);
    EXPECT_EQ(support::openDescriptors(), before);
  }
}

TEST_F(LoggedPrograms, AreNotWatchedWithoutMemory) {
  m_loop.runAllReady();
  const LogKeeper keeper;  // it needs no memory
  for (std::size_t allocations = 0;; ++allocations) {
    const Descriptor end = m_programs->open("client");
    bool ranOut = false;
    {
      const support::NoMemory none(allocations);
      EXPECT_NO_THROW(m_loop.runAllReady());
      ranOut = support::NoMemory::ranOut();
    }
    if (!ranOut) break;
    const auto kept = ApplicationLog::instance().kept();
    ASSERT_EQ(kept.size(), allocations + 1);
    EXPECT_EQ(kept.back().text, "the output of \"client\" is no longer read: std::bad_alloc");
    pollfd closed{end.get(), POLLOUT, 0};
    EXPECT_EQ(::poll(&closed, 1, 0), 1);
    EXPECT_NE(closed.revents & POLLERR, 0);
  }
}

}  // namespace
}  // namespace host
