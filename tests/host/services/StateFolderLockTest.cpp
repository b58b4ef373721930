#include "services/StateFolderLock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>

#include "host/services/StoreFile.h"
#include "support/ErrorOf.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

class LockedStateFolder : public ::testing::Test {
 protected:
  std::string refusal() const {
    return errorOf([this] { const StateFolderLock lock(state); });
  }
  fs::perms mode() const { return fs::status(state).permissions(); }

  support::TemporaryFolder folder;
  const fs::path state = folder / "state";
  support::LogCapture log;
};

TEST_F(LockedStateFolder, IsCreatedForItsOwnerOnly) {
  const StateFolderLock lock(state / "");
  EXPECT_EQ(mode(), fs::perms::owner_all);
  EXPECT_EQ(log.text(), "");
}

TEST_F(LockedStateFolder, IsRefusedToASecondHost) {
  std::optional<StateFolderLock> lock(state);
  EXPECT_EQ(refusal(), "state folder \"" + state.string() + "\" is in use by another host");
  lock.reset();
  EXPECT_EQ(refusal(), "");
}

TEST_F(LockedStateFolder, IsTightenedWhenItBelongsToTheHost) {
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

// The second start finds only the lock of the first, as after a start that failed early.
TEST_F(LockedStateFolder, IsTightenedWhenItContainsOnlyTheLock) {
  fs::create_directory(state);
  for (int start = 0; start < 2; ++start) {
    fs::permissions(state, fs::perms(0755));
    log.clear();
    const StateFolderLock lock(state);
    EXPECT_EQ(mode(), fs::perms::owner_all);
    EXPECT_TRUE(log.hasPart("(mode 0755): changed to 0700")) << log.text();
  }
}

// A home, or a shared folder such as /tmp, must stay open.
TEST_F(LockedStateFolder, KeepsItsModeWhenItContainsOtherFiles) {
  fs::create_directory(state);
  for (const fs::perms open : {fs::perms(0755), fs::perms(01777)}) {
    writeBytes(state / (open == fs::perms(0755) ? "letter" : "settings.db"), "");
    fs::permissions(state, open);
    log.clear();
    const StateFolderLock lock(state);
    EXPECT_EQ(mode(), open);
    EXPECT_EQ(log.text().find("clockhost 3: "), 0U) << log.text();
    EXPECT_TRUE(log.hasPart("and contains other files: its mode is kept")) << log.text();
  }
}

TEST_F(LockedStateFolder, IsRefusedWhenReadOnly) {
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

TEST_F(LockedStateFolder, IsRefusedWhenItIsAFile) {
  writeBytes(state, "text");
  EXPECT_EQ(refusal(), "state folder \"" + state.string() + "\" is not a folder");
}

TEST_F(LockedStateFolder, DoesNotBlockOnAPipeInPlaceOfTheLockFile) {
  fs::create_directory(state);
  ASSERT_EQ(mkfifo((state / StateFolderLock::kFileName).c_str(), 0600), 0);
  const StateFolderLock lock(state);
  EXPECT_NE(refusal(), "");
}

TEST_F(LockedStateFolder, DoesNotFollowALinkInPlaceOfTheLockFile) {
  fs::create_directory(state);
  fs::create_symlink(folder / "elsewhere", state / StateFolderLock::kFileName);
  EXPECT_EQ(refusal(), "state folder \"" + state.string() +
                           "\" cannot be locked: " + (state / StateFolderLock::kFileName).string() +
                           ": Too many levels of symbolic links");
  EXPECT_FALSE(fs::exists(folder / "elsewhere"));
}

}  // namespace
}  // namespace host
