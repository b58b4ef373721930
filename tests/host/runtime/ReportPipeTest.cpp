#include "runtime/ReportPipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "interpose/DeviceRoot.h"
#include "support/ErrorOf.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

class ReportPipeOfADevice : public testing::Test {
 protected:
  ReportPipeOfADevice() { host::setDeviceRoot(m_folder.path()); }
  ~ReportPipeOfADevice() override { host::setDeviceRoot(""); }

  [[nodiscard]] fs::path onHost(const std::string& path) const {
    return m_folder.path().string() + path;
  }
  static mode_t modeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode;
  }
  static std::string refusal() {
    return errorOf([] { const host::ReportPipe pipe; });
  }

  const support::TemporaryFolder m_folder;
};

TEST_F(ReportPipeOfADevice, IsCreatedForItsOwnerOnly) {
  const host::ReportPipe pipe;
  EXPECT_EQ(pipe.path(), onHost("/tmp/votk/ipc/ntpclient"));
  EXPECT_EQ(modeOf(pipe.path()), mode_t{S_IFIFO | 0600});
  EXPECT_EQ(modeOf(onHost("/tmp/votk/ipc")), mode_t{S_IFDIR | 0700});
}

TEST_F(ReportPipeOfADevice, TightensTheModesOfAnEarlierPipe) {
  fs::create_directories(onHost("/tmp/votk/ipc"));
  ASSERT_EQ(mkfifo(onHost("/tmp/votk/ipc/ntpclient").c_str(), 0666), 0);
  fs::permissions(onHost("/tmp/votk/ipc"), fs::perms::all);
  fs::permissions(onHost("/tmp/votk/ipc/ntpclient"), fs::perms::all);
  const host::ReportPipe pipe;
  EXPECT_EQ(modeOf(pipe.path()), mode_t{S_IFIFO | 0600});
  EXPECT_EQ(modeOf(onHost("/tmp/votk/ipc")), mode_t{S_IFDIR | 0700});
}

TEST_F(ReportPipeOfADevice, RefusesAFileInItsPlace) {
  fs::create_directories(onHost("/tmp/votk/ipc"));
  std::ofstream(onHost("/tmp/votk/ipc/ntpclient")) << "precious";
  EXPECT_NE(refusal().find("ntpclient: is not a named pipe; remove it"), std::string::npos)
      << refusal();
  EXPECT_EQ(support::contentOf(onHost("/tmp/votk/ipc/ntpclient")), "precious");
}

TEST_F(ReportPipeOfADevice, RefusesALinkInPlaceOfFolderOrPipe) {
  fs::create_directories(onHost("/tmp/votk"));
  fs::create_directories(onHost("/elsewhere"));
  fs::create_directory_symlink(onHost("/elsewhere"), onHost("/tmp/votk/ipc"));
  EXPECT_NE(refusal().find("ipc: is not a folder"), std::string::npos) << refusal();
  fs::remove(onHost("/tmp/votk/ipc"));
  fs::create_directories(onHost("/tmp/votk/ipc"));
  fs::create_symlink("/dev/null", onHost("/tmp/votk/ipc/ntpclient"));
  EXPECT_NE(refusal().find("is not a named pipe"), std::string::npos) << refusal();
}

TEST_F(ReportPipeOfADevice, RefusesAFileInPlaceOfTheFolder) {
  fs::create_directories(onHost("/tmp/votk"));
  std::ofstream(onHost("/tmp/votk/ipc")) << "x";
  EXPECT_NE(refusal().find("ipc: is not a folder"), std::string::npos) << refusal();
}

TEST_F(ReportPipeOfADevice, RefusesAPathThatCannotBeCreated) {
  std::ofstream(onHost("/tmp")) << "a file";
  EXPECT_NE(refusal(), "");
}

TEST_F(ReportPipeOfADevice, RefusesAPathThatOthersMayWrite) {
  fs::create_directories(onHost("/tmp/votk/ipc"));
  fs::permissions(onHost("/tmp"), fs::perms::all);
  EXPECT_NE(refusal().find("/tmp: can be written by others"), std::string::npos) << refusal();
}

// The owner of a folder can replace what is in it, even if it is sticky.
TEST_F(ReportPipeOfADevice, RefusesAStickyFolderOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  fs::create_directories(onHost("/tmp/votk/ipc"));
  fs::permissions(onHost("/tmp/votk"), fs::perms::all | fs::perms::sticky_bit);
  ASSERT_EQ(chown(onHost("/tmp/votk").c_str(), 12345, 12345), 0);
  EXPECT_NE(refusal().find("votk: belongs to another user"), std::string::npos) << refusal();
}

TEST_F(ReportPipeOfADevice, IsRefusedToASecondHost) {
  {
    const host::ReportPipe first;
    EXPECT_NE(refusal().find("ntpclient: is in use by another host; give each a --device-root"),
              std::string::npos)
        << refusal();
  }
  EXPECT_EQ(refusal(), "");
}

TEST_F(ReportPipeOfADevice, RefusesFolderAndPipeOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  fs::create_directories(onHost("/tmp/votk/ipc"));
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc").c_str(), 12345, 12345), 0);
  EXPECT_NE(refusal().find("ipc: belongs to another user"), std::string::npos) << refusal();
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc").c_str(), 0, 0), 0);
  ASSERT_EQ(mkfifo(onHost("/tmp/votk/ipc/ntpclient").c_str(), 0600), 0);
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc/ntpclient").c_str(), 12345, 12345), 0);
  EXPECT_NE(refusal().find("ntpclient: belongs to another user"), std::string::npos) << refusal();
}

}  // namespace
