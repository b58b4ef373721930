#include "services/StateFolderLock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <optional>

#include "host/services/StoreFile.h"
#include "support/ErrorOf.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

class LockedState : public ::testing::Test {
 protected:
  std::string refusal() const {
    return errorOf([this] { const StateFolderLock lock(state); });
  }
  fs::perms mode() const { return fs::status(state).permissions(); }

  support::TemporaryFolder folder;
  const fs::path state = folder / "state";
  support::LogCapture log;
};

TEST_F(LockedState, IsMadeForItsOwnerOnly) {
  const StateFolderLock lock(state / "");
  EXPECT_EQ(mode(), fs::perms::owner_all);
  EXPECT_EQ(log.text(), "");
}

TEST_F(LockedState, IsForOneHostAlone) {
  std::optional<StateFolderLock> lock(state);
  EXPECT_EQ(refusal(), "state folder \"" + state.string() + "\" is in use by another host");
  lock.reset();
  EXPECT_EQ(refusal(), "");
}

// The file of the lock stays behind, the lock does not.
TEST_F(LockedState, IsFreeAgainWhenItsHostWasKilled) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const StateFolderLock lock(state);
    static_cast<void>(write(ready[1], "x", 1));
    for (;;) pause();
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  EXPECT_NE(refusal(), "");
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(fs::exists(state / StateFolderLock::kFileName));
  EXPECT_EQ(refusal(), "");
  for (const int end : ready) close(end);
}

TEST_F(LockedState, IsClosedToOthersWhereItIsTheHostsOwn) {
  fs::create_directory(state);
  writeBytes(state / "settings.db", "");
  fs::permissions(state, fs::perms(0755));
  const StateFolderLock lock(state);
  EXPECT_EQ(mode(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(state / StateFolderLock::kFileName).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_TRUE(log.has("\"" + state.string() + "\" is open to others (mode 0755): changed to 0700"))
      << log.text();
}

// Also when a first start got no further than its lock.
TEST_F(LockedState, IsClosedToOthersWhereItHoldsNothingButTheLock) {
  fs::create_directory(state);
  for (int start = 0; start < 2; ++start) {
    fs::permissions(state, fs::perms(0755));
    log.clear();
    const StateFolderLock lock(state);
    EXPECT_EQ(mode(), fs::perms::owner_all);
    EXPECT_TRUE(log.hasPart("(mode 0755): changed to 0700")) << log.text();
  }
}

// A home, or a shared folder like that of temporary files, is not to be shut.
TEST_F(LockedState, IsLeftAsItIsWhereItHoldsOtherThings) {
  fs::create_directory(state);
  for (const fs::perms open : {fs::perms(0755), fs::perms(01777)}) {
    writeBytes(state / (open == fs::perms(0755) ? "letter" : "settings.db"), "");
    fs::permissions(state, open);
    log.clear();
    const StateFolderLock lock(state);
    EXPECT_EQ(mode(), open);
    EXPECT_EQ(log.text().find("clockhost 3: "), 0U) << log.text();
    EXPECT_TRUE(log.hasPart("and holds more than the host's state: left so")) << log.text();
  }
}

TEST_F(LockedState, SaysThatItIsReadOnly) {
  fs::create_directory(state);
  const bool root = ::geteuid() == 0;
  if (root) {
    ASSERT_EQ(::chown(state.c_str(), kNobody, kNobody), 0);
    fs::permissions(folder.path(), fs::perms(0755));
  }
  fs::permissions(state, fs::perms(0500));
  ASSERT_EQ(::seteuid(root ? kNobody : ::geteuid()), 0);
  const std::string error = refusal();
  ASSERT_EQ(::seteuid(root ? 0 : ::geteuid()), 0);
  EXPECT_EQ(error, "state folder is read-only: " + state.string());
}

TEST_F(LockedState, RefusesWhatIsNoFolder) {
  writeBytes(state, "text");
  EXPECT_EQ(refusal(), "state folder \"" + state.string() + "\" is no folder");
}

TEST_F(LockedState, DoesNotWaitForAPipeInTheLocksPlace) {
  fs::create_directory(state);
  ASSERT_EQ(mkfifo((state / StateFolderLock::kFileName).c_str(), 0600), 0);
  const StateFolderLock lock(state);
  EXPECT_NE(refusal(), "");
}

TEST_F(LockedState, DoesNotFollowALinkInTheLocksPlace) {
  fs::create_directory(state);
  fs::create_symlink(folder / "elsewhere", state / StateFolderLock::kFileName);
  EXPECT_EQ(refusal(), "state folder \"" + state.string() +
                           "\" cannot be locked: " + (state / StateFolderLock::kFileName).string() +
                           ": Too many levels of symbolic links");
  EXPECT_FALSE(fs::exists(folder / "elsewhere"));
}

}  // namespace
}  // namespace host
