#include "runtime/ReportPipe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "interpose/DeviceRoot.h"
#include "support/ErrorOf.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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

TEST_F(ReportPipeOfADevice, RefusesAnUnsafeOrImpossiblePath) {
  const fs::path top = onHost("/tmp");
  const fs::path folder = onHost("/tmp/votk/ipc");
  const fs::path pipe = folder / "ntpclient";
  const struct {
    std::function<void()> prepare;
    std::string refusal;
  } rows[] = {
      {[&] { std::ofstream(pipe) << "x"; }, "ntpclient is not a named pipe; remove it"},
      {[&] { fs::create_symlink("/dev/null", pipe); }, "ntpclient is not a named pipe; remove it"},
      {[&] {
         fs::remove(folder);
         std::ofstream(folder) << "x";
       },
       "ipc is not a folder"},
      {[&] {
         fs::remove(folder);
         fs::create_symlink(m_folder.path(), folder);
       },
       "ipc is not a folder"},
      {[&] {
         fs::remove_all(top);
         std::ofstream(top) << "x";
       },
       "/tmp is not a folder"},
      {[&] { fs::permissions(top, fs::perms::all); }, "/tmp is writable by others"},
  };
  for (const auto& row : rows) {
    fs::remove_all(top);
    fs::create_directories(folder);
    row.prepare();
    EXPECT_THAT(refusal(), AllOf(StartsWith("report pipe: "), HasSubstr(row.refusal)));
  }
}

TEST_F(ReportPipeOfADevice, LeavesARefusedFileUnchanged) {
  const fs::path file = onHost("/tmp/votk/ipc/ntpclient");
  fs::create_directories(file.parent_path());
  std::ofstream(file) << "x";
  EXPECT_NE(refusal(), "");
  EXPECT_EQ(support::contentOf(file), "x");
}

TEST_F(ReportPipeOfADevice, IsRefusedToASecondHost) {
  {
    const host::ReportPipe first;
    EXPECT_THAT(
        refusal(),
        HasSubstr("ntpclient is in use by another host; give each host its own --device-root"));
  }
  EXPECT_EQ(refusal(), "");
}

TEST_F(ReportPipeOfADevice, RefusesFolderAndPipeOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  fs::create_directories(onHost("/tmp/votk/ipc"));
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc").c_str(), 12345, 12345), 0);
  EXPECT_THAT(refusal(), HasSubstr("ipc belongs to another user"));
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc").c_str(), 0, 0), 0);
  ASSERT_EQ(mkfifo(onHost("/tmp/votk/ipc/ntpclient").c_str(), 0600), 0);
  ASSERT_EQ(chown(onHost("/tmp/votk/ipc/ntpclient").c_str(), 12345, 12345), 0);
  EXPECT_THAT(refusal(), HasSubstr("ntpclient belongs to another user"));
}

}  // namespace
