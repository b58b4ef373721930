#include "apps/Readiness.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <cstdlib>
#include <sstream>

#include "apps/HostOptions.h"
#include "base/DefaultPaths.h"
#include "support/FileContent.h"
#include "support/LogCapture.h"
#include "support/ManagerSocket.h"
#include "support/TemporaryFolder.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

bool isOpen(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) >= 0;
}

class ReadyDescriptor : public ::testing::Test {
 protected:
  // As a shell opens it, which leaves it open for its children.
  int open(int flags) const { return ::open((m_folder / "file").c_str(), flags | O_CREAT, 0600); }
  std::string content() const { return support::contentOf(m_folder / "file"); }

  support::TemporaryFolder m_folder;
};

TEST_F(ReadyDescriptor, GetsANewlineAndIsClosed) {
  const int descriptor = open(O_WRONLY);
  Readiness readiness(descriptor);
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC) << "a child would keep it open";
  EXPECT_EQ(content(), "");
  readiness.ready();
  EXPECT_EQ(content(), "\n");
  EXPECT_FALSE(isOpen(descriptor));
}

TEST_F(ReadyDescriptor, IsClosedWithoutANewlineIfTheHostDoesNotStart) {
  const int descriptor = open(O_WRONLY);
  { const Readiness readiness(descriptor); }
  EXPECT_EQ(content(), "");
  EXPECT_FALSE(isOpen(descriptor));
}

TEST_F(ReadyDescriptor, IsOpenForWriting) {
  const Descriptor reading(open(O_RDONLY));
  EXPECT_NE(checkReadyDescriptor(reading.get()), "");
  const Descriptor both(open(O_RDWR));
  EXPECT_EQ(checkReadyDescriptor(both.get()), "");
}

TEST_F(ReadyDescriptor, IsAnOptionThatScenariosRefuse) {
  const Descriptor file(open(O_WRONLY));
  std::ostringstream out;
  std::vector<std::string> words = {"--ready-fd", std::to_string(file.get())};
  EXPECT_EQ(readHostOptions(words, {}, out)->readyDescriptor, file.get());
  words.insert(words.end(), {"--scenario", "a"});
  EXPECT_THROW(static_cast<void>(readHostOptions(words, {}, out)), UsageError);
}

TEST_F(ReadyDescriptor, ThatTakesNothingIsALineInTheLog) {
  const support::LogCapture log;
  Readiness(::open("/dev/full", O_WRONLY | O_CLOEXEC)).ready();
  EXPECT_TRUE(log.has("--ready-fd cannot be written: No space left on device")) << log.text();
}

void setManager(const std::string& name) {
  ::setenv("NOTIFY_SOCKET", name.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): no thread
}

TEST(ServiceManager, IsNotifiedAtAPathAndAtAnAbstractAddress) {
  const support::TemporaryFolder folder;
  const std::string unique = '@' + (folder / "abstract").string();
  for (const std::string& name : {(folder / "manager").string(), unique}) {
    const support::ManagerSocket manager(name);
    const auto notice = [&] { return manager.notice(std::chrono::milliseconds(0)); };
    setManager(name);
    Readiness readiness(-1);
    EXPECT_EQ(std::getenv("NOTIFY_SOCKET"), nullptr) << "a child would notify, too";
    EXPECT_EQ(notice(), "");
    readiness.ready();
    EXPECT_EQ(notice(), "READY=1");
    readiness.stopping();
    EXPECT_EQ(notice(), "STOPPING=1");
    EXPECT_EQ(notice(), "");
  }
}

TEST(ServiceManager, ThatCannotBeNotifiedIsALineInTheLog) {
  const support::TemporaryFolder folder;
  const std::string missing = folder / "missing";
  const std::pair<std::string, const char*> rows[] = {
      {missing, "No such file or directory"},
      {"vsock:2:1", "Invalid argument"},
      {'/' + std::string(200, 'x'), "Invalid argument"}};
  for (const auto& [name, reason] : rows) {
    const support::LogCapture log;
    setManager(name);
    Readiness(-1).ready();
    EXPECT_TRUE(log.hasPart("does not get READY=1: " + std::string(reason))) << log.text();
  }
}

TEST(ServiceManager, MayBeMissing) {
  const support::LogCapture log;
  Readiness readiness(-1);
  readiness.ready();
  readiness.stopping();
  EXPECT_EQ(log.text(), "");
}

}  // namespace
}  // namespace host
