#include "runtime/TrustedFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/Error.h"
#include "support/ErrorOf.h"
#include "support/SoftLimit.h"
#include "support/TemporaryFolder.h"

namespace {

using ::testing::HasSubstr;

namespace fs = std::filesystem;

constexpr uid_t kUser = 1000;
constexpr gid_t kGroup = 1000;
constexpr uid_t kOther = 2000;
constexpr std::size_t kAll = 100;  // folders that may be created

struct Row {
  uid_t owner;
  gid_t group;
  mode_t mode;
  bool trusted;
};

TEST(ReasonToDistrust, DependsOnOwnerGroupAndMode) {
  const Row rows[] = {
      {0, 0, 0755, true},              // root's
      {kUser, kGroup, 0700, true},     // the user's own
      {kUser, kOther, 0755, true},     // a group that only reads
      {kUser, kGroup, 0775, true},     // the user's private group
      {0, 0, 0775, true},              // root's group
      {0, 0, 01777, true},             // as /tmp is
      {kUser, kOther, 01775, true},    // the same for a group
      {kOther, kGroup, 0755, false},   // another user's
      {kOther, kGroup, 01777, false},  // the owner may replace what is in it, sticky or not
      {kUser, kGroup, 0777, false},    // all may write
      {kUser, kGroup, 0702, false},    //
      {0, 0, 0777, false},             //
      {kUser, kOther, 0775, false},    // a group of others
      {kUser, kOther, 0720, false},    //
  };
  for (const Row& row : rows) {
    struct stat status {};
    status.st_uid = row.owner;
    status.st_gid = row.group;
    status.st_mode = S_IFDIR | row.mode;
    EXPECT_EQ(host::reasonToDistrust(status, kUser, kGroup).empty(), row.trusted)
        << row.owner << ' ' << row.group << ' ' << std::oct << row.mode;
  }
}

TEST(ReasonToDistrust, RootTrustsNoUser) {
  struct stat status {};
  status.st_uid = kUser;
  status.st_mode = S_IFDIR | 0700;
  EXPECT_NE(host::reasonToDistrust(status, 0, 0), "");
}

class TrustedFolder : public testing::Test {
 protected:
  static std::string refusal(const fs::path& path) {
    return errorOf([&] { static_cast<void>(host::openTrustedFolder(path, kAll, {})); });
  }
  static bool isSame(int folder, const fs::path& path) {
    return fs::equivalent("/proc/self/fd/" + std::to_string(folder), path);
  }

  const support::TemporaryFolder m_folder;
};

TEST_F(TrustedFolder, IsCreatedWithMissingParents) {
  const host::Descriptor folder = host::openTrustedFolder(m_folder / "a/b/c", kAll, {});
  EXPECT_TRUE(isSame(folder.get(), m_folder / "a/b/c"));
  EXPECT_EQ(fs::status(m_folder / "a/b").permissions() & fs::perms::others_write, fs::perms::none);
}

TEST_F(TrustedFolder, IsCreatedWithinTheLimit) {
  EXPECT_THROW(static_cast<void>(host::openTrustedFolder(m_folder / "a/b/c", 2, {})), host::Error);
  EXPECT_FALSE(fs::exists(m_folder / "a"));
  fs::create_directory(m_folder / "a");
  static_cast<void>(host::openTrustedFolder(m_folder / "a/b/c", 2, {}));
  EXPECT_TRUE(fs::exists(m_folder / "a/b/c"));
}

TEST_F(TrustedFolder, ThatCannotBeCreatedIsRefused) {
  EXPECT_EQ(refusal("/proc/none"),
            "/proc/none: No such file or directory; name another place with --device-root");
}

TEST_F(TrustedFolder, BeyondTheLimitOfOpenFilesIsRefused) {
  const support::SoftLimit none(RLIMIT_NOFILE, 0);
  EXPECT_EQ(refusal("/"), "/: Too many open files; raise the limit of open files (ulimit -n)");
}

TEST_F(TrustedFolder, ReportsEachFolderOfThePath) {
  std::vector<fs::path> seen;
  const auto each = [&](int folder) {
    seen.push_back(fs::read_symlink("/proc/self/fd/" + std::to_string(folder)));
  };
  const host::Descriptor folder = host::openTrustedFolder(m_folder / "a/b", kAll, each);
  ASSERT_GE(seen.size(), 4U);
  EXPECT_EQ(seen.front(), "/");
  EXPECT_EQ(seen[seen.size() - 2], fs::canonical(m_folder / "a"));
  EXPECT_EQ(seen.back(), fs::canonical(m_folder / "a/b"));
}

TEST_F(TrustedFolder, IsNotBelowAFolderThatOthersMayWrite) {
  fs::create_directories(m_folder / "a/b");
  fs::permissions(m_folder / "a", fs::perms::all);
  EXPECT_THAT(
      refusal(m_folder / "a/b"),
      HasSubstr("a is writable by others; remove that permission, or name another place with "
                "--device-root"));
  fs::permissions(m_folder / "a", fs::perms::all | fs::perms::sticky_bit);
  EXPECT_EQ(refusal(m_folder / "a/b"), "");
}

TEST_F(TrustedFolder, IsNotBelowAFolderOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  fs::create_directories(m_folder / "a/b");
  ASSERT_EQ(chown((m_folder / "a").c_str(), 12345, 12345), 0);
  EXPECT_THAT(refusal(m_folder / "a/b"),
              HasSubstr("a belongs to another user; name another place with --device-root"));
}

TEST_F(TrustedFolder, IsReachedThroughOwnLinks) {
  fs::create_directories(m_folder / "target/b");
  fs::create_directories(m_folder / "links");
  fs::create_directory_symlink(m_folder / "target", m_folder / "links/absolute");
  fs::create_directory_symlink("../target/./b/..", m_folder / "links/relative");
  for (const char* const link : {"links/absolute/b", "links/relative/b"}) {
    const host::Descriptor folder = host::openTrustedFolder(m_folder / link, kAll, {});
    EXPECT_TRUE(isSame(folder.get(), m_folder / "target/b")) << link;
  }
}

TEST_F(TrustedFolder, IsNotReachedThroughLinksOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a link away";
  fs::create_directories(m_folder / "target");
  fs::create_directory_symlink(m_folder / "target", m_folder / "link");
  ASSERT_EQ(lchown((m_folder / "link").c_str(), 12345, 12345), 0);
  EXPECT_THAT(refusal(m_folder / "link/b"),
              HasSubstr("link is a link of another user; name another place with --device-root"));
}

TEST_F(TrustedFolder, IsNotReachedThroughALoopOfLinks) {
  fs::create_directory_symlink(m_folder / "two", m_folder / "one");
  fs::create_directory_symlink(m_folder / "one", m_folder / "two");
  EXPECT_THAT(refusal(m_folder / "one/b"),
              HasSubstr("too many links on the way; name another place with --device-root"));
}

TEST_F(TrustedFolder, IsNotAFile) {
  std::ofstream(m_folder / "file") << "x";
  EXPECT_THAT(refusal(m_folder / "file"),
              HasSubstr("file is not a folder; name another place with --device-root"));
  EXPECT_THAT(refusal(m_folder / "file/b"),
              HasSubstr("file is not a folder; name another place with --device-root"));
}

}  // namespace
