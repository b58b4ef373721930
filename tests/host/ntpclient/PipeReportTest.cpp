#include "ntpclient/PipeReport.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <future>

#include "base/Descriptor.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace host::ntp {
namespace {

using namespace std::chrono_literals;

class PipeToAListener : public testing::Test {
 protected:
  PipeToAListener() { std::signal(SIGPIPE, SIG_IGN); }

  void makePipe() { ASSERT_EQ(::mkfifo(m_pipe.c_str(), 0600), 0); }

  std::future<ReportResult> report(std::uint32_t seconds, std::chrono::milliseconds limit = 20s) {
    return std::async(std::launch::async,
                      [=, this] { return reportTime(m_pipe.c_str(), seconds, limit, m_watch); });
  }

  // As the service does: opens, reads once, closes.
  std::uint32_t listen() {
    const Descriptor pipe(::open(m_pipe.c_str(), O_RDONLY | O_CLOEXEC));
    std::uint32_t seconds = 0;
    const ssize_t got = ::read(pipe.get(), &seconds, sizeof seconds);
    return got == static_cast<ssize_t>(sizeof seconds) ? seconds : 0;
  }

  const support::TemporaryFolder m_folder;
  const std::filesystem::path m_pipe = m_folder / "ntpclient";
  const ParentWatch m_watch;
};

TEST_F(PipeToAListener, CarriesFourBytesInTheMachinesByteOrder) {
  makePipe();
  auto result = report(0xfedcba98);
  EXPECT_EQ(listen(), 0xfedcba98);
  EXPECT_EQ(result.get(), ReportResult::delivered);
}

TEST_F(PipeToAListener, WaitsForAListenerAndForThePipeItself) {
  auto result = report(1'780'000'000);
  EXPECT_EQ(result.wait_for(30ms), std::future_status::timeout);
  makePipe();
  EXPECT_EQ(result.wait_for(30ms), std::future_status::timeout);
  EXPECT_EQ(listen(), 1'780'000'000U);
  EXPECT_EQ(result.get(), ReportResult::delivered);
}

TEST_F(PipeToAListener, GivesUpAtItsLimit) {
  EXPECT_EQ(report(1, 20ms).get(), ReportResult::noListener) << "no pipe";
  makePipe();
  EXPECT_EQ(report(1, 20ms).get(), ReportResult::noListener) << "no listener";
  const Descriptor silentReader(::open(m_pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  EXPECT_EQ(report(1, 20ms).get(), ReportResult::noListener) << "a listener that does not read";
  const Descriptor other(::open(m_pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
  const std::string bytes(4096, 'x');
  while (::write(other.get(), bytes.data(), bytes.size()) > 0) continue;
  EXPECT_EQ(report(1, 20ms).get(), ReportResult::noListener) << "a full pipe";
}

TEST_F(PipeToAListener, IsReadByTheNextListenerWhenOneLeavesWithoutReading) {
  makePipe();
  std::future<ReportResult> result;
  {
    const Descriptor leaving(::open(m_pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    result = report(77);
    EXPECT_EQ(result.wait_for(50ms), std::future_status::timeout);
  }
  EXPECT_EQ(listen(), 77U);
  EXPECT_EQ(result.get(), ReportResult::delivered);
}

TEST_F(PipeToAListener, DoesNotWriteIntoAFile) {
  std::ofstream(m_pipe) << "file";
  EXPECT_EQ(report(1).get(), ReportResult::noPipe);
  EXPECT_EQ(support::contentOf(m_pipe), "file");
}

}  // namespace
}  // namespace host::ntp
