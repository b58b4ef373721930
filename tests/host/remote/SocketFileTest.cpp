#include "remote/SocketFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <thread>
#include <vector>

#include "base/Error.h"
#include "remote/SocketAddress.h"
#include "support/LogCapture.h"
#include "support/SoftLimit.h"
#include "support/TemporaryFolder.h"
#include "support/WaitingCall.h"

namespace host {
namespace {

// The error of the constructor; empty when there is none.
std::string refusalOf(const std::filesystem::path& file,
                      std::chrono::milliseconds patience = SocketFile::kPatience) try {
  const SocketFile socket(file, {}, patience);
  return "";
} catch (const Error& error) {
  return error.what();
}

bool canConnect(const std::filesystem::path& file) {
  const SocketAddress address(file);
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  return ::connect(socket.get(), address.get(), address.size()) == 0;
}

// A socket file as a killed host leaves it.
void leaveStale(const std::filesystem::path& file) {
  const SocketAddress address(file);
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(::bind(socket.get(), address.get(), address.size()), 0);
}

// A user may give a file to a group of its own, root to any.
gid_t someGroup() {
  std::vector<gid_t> groups(static_cast<std::size_t>(::getgroups(0, nullptr)));
  EXPECT_EQ(::getgroups(static_cast<int>(groups.size()), groups.data()), groups.size());
  return ::geteuid() == 0 ? 12345 : groups.empty() ? ::getegid() : groups.back();
}

struct stat statusOf(const std::filesystem::path& file) {
  struct stat found {};
  EXPECT_EQ(::stat(file.c_str(), &found), 0) << file;
  return found;
}

class SocketFileInNewFolder : public ::testing::Test {
 protected:
  const support::TemporaryFolder folder;
  const std::filesystem::path file = folder / "socket";
};

TEST_F(SocketFileInNewFolder, IsRemovedByItsDestructor) {
  {
    const SocketFile socket(file);
    EXPECT_TRUE(canConnect(file));
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(SocketFileInNewFolder, AndItsOwnFolderAreForTheOwnerAlone) {
  const SocketFile socket(folder / "run" / "socket");
  EXPECT_EQ(statusOf(folder / "run").st_mode & 07777U, 0700U);
  EXPECT_EQ(statusOf(folder / "run" / "socket").st_mode & 07777U, 0600U);
}

TEST_F(SocketFileInNewFolder, AndItsOwnFolderAreAlsoForTheNamedGroup) {
  const SocketFile socket(folder / "run" / "socket", someGroup());
  const struct stat run = statusOf(folder / "run");
  EXPECT_EQ(run.st_mode & 07777U, 0710U);
  EXPECT_EQ(run.st_gid, someGroup());
  const struct stat found = statusOf(folder / "run" / "socket");
  EXPECT_EQ(found.st_mode & 07777U, 0660U);
  EXPECT_EQ(found.st_gid, someGroup());
  EXPECT_EQ(found.st_uid, ::geteuid());
}

TEST_F(SocketFileInNewFolder, LogsAFolderThatItsGroupCannotEnter) {
  const gid_t group = someGroup();
  const struct stat former = statusOf(folder.path());
  const auto inner = folder / "run" / "socket";
  const std::string line = "socket " + inner.string() + ": its group (" + std::to_string(group) +
                           ") cannot enter the folder " + folder.path().string() + " (mode ";
  for (const gid_t owner : {former.st_gid, group}) {
    ASSERT_EQ(::chown(folder.path().c_str(), ::geteuid(), owner), 0);
    for (const mode_t mode : {0700U, 0701U, 0710U, 0711U}) {
      const support::LogCapture log;
      std::filesystem::permissions(folder.path(), std::filesystem::perms(mode));
      const SocketFile socket(inner, group);
      const bool enters = (mode & (owner == group ? S_IXGRP : S_IXOTH)) != 0;
      EXPECT_EQ(log.hasPart(line), !enters) << std::oct << mode << log.text();
      const SocketFile without(folder / "other");
      EXPECT_LE(log.entries().size(), 1U) << log.text();
    }
  }
  const support::LogCapture log;
  std::filesystem::permissions(folder.path(), std::filesystem::perms(0700));
  const SocketFile socket(inner, group);
  EXPECT_TRUE(log.has(line + "0700); allow it, or choose another place with --socket"))
      << log.text();
}

TEST_F(SocketFileInNewFolder, ReplacesAStaleOne) {
  leaveStale(file);
  EXPECT_FALSE(canConnect(file));
  const SocketFile socket(file);
  EXPECT_TRUE(canConnect(file));
}

TEST_F(SocketFileInNewFolder, RefusesTheSocketOfARunningHost) {
  const SocketFile live(file);
  EXPECT_EQ(refusalOf(file), "socket " + file.string() + " is in use by a running program");
  EXPECT_TRUE(canConnect(file));
}

TEST_F(SocketFileInNewFolder, RefusesTheSocketOfARunningHostWithAFullBacklog) {
  const SocketFile live(file);
  ASSERT_EQ(::listen(live.descriptor(), 0), 0);
  const SocketAddress address(file);
  std::vector<Descriptor> waiting;
  do {
    waiting.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  } while (::connect(waiting.back().get(), address.get(), address.size()) == 0);
  EXPECT_EQ(refusalOf(file), "socket " + file.string() + " is in use by a running program");
}

TEST_F(SocketFileInNewFolder, RefusesAFileThatIsNoSocketAndKeepsIt) {
  std::ofstream(file) << "precious";
  EXPECT_EQ(refusalOf(file), "socket " + file.string() + ": the file exists and is not a socket");
  EXPECT_EQ(std::filesystem::file_size(file), 8U);
}

TEST(SocketFile, RefusesAPathThatIsTooLong) {
  const std::string path = "/tmp/" + std::string(200, 'x');
  EXPECT_EQ(refusalOf(path), "socket " + path + ": the path must have 1 to 107 bytes");
}

TEST(SocketFile, RefusesAFolderThatCannotBeCreated) {
  EXPECT_EQ(refusalOf("/proc/none/socket"),
            "socket /proc/none/socket: cannot bind it: No such file or directory");
}

TEST_F(SocketFileInNewFolder, RefusesWhenNoDescriptorIsLeft) {
  const support::SoftLimit none(RLIMIT_NOFILE, 0);
  EXPECT_EQ(refusalOf(file), "socket " + file.string() + ": cannot create it: Too many open files");
}

TEST_F(SocketFileInNewFolder, OneOfManyThatStartAtOnceGetsIt) {
  for (int round = 0; round < 20; ++round) {
    leaveStale(file);
    std::vector<std::unique_ptr<SocketFile>> taken(4);
    std::vector<std::thread> threads;
    for (auto& mine : taken) {
      threads.emplace_back([&] {
        try {
          mine = std::make_unique<SocketFile>(file);
        } catch (const Error&) {
          mine.reset();
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::count(taken.begin(), taken.end(), nullptr), 3);
    EXPECT_TRUE(canConnect(file));
  }
}

// A stopped process, or one of another user, may hold the folder's lock forever.
TEST_F(SocketFileInNewFolder, RefusesAFolderThatStaysLocked) {
  const Descriptor lock(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
  EXPECT_EQ(refusalOf(file), "socket " + file.string() + ": its folder " + folder.path().string() +
                                 " stays locked by another process; end that process, or choose "
                                 "another folder");
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SocketFileInNewFolder, WaitsForAHostThatStartsInTheSameFolder) {
  Descriptor lock(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
  std::string refusal = "none yet";
  {
    const support::WaitingCall taking([&] { refusal = refusalOf(file, std::chrono::hours(1)); });
    EXPECT_TRUE(taking.waits());
    lock.reset();
  }
  EXPECT_EQ(refusal, "");
}

TEST_F(SocketFileInNewFolder, DoesNotRemoveTheFileOfAnotherSocket) {
  auto first = std::make_unique<SocketFile>(file);
  std::filesystem::remove(file);
  const SocketFile second(file);
  first.reset();
  EXPECT_TRUE(canConnect(file));
}

}  // namespace
}  // namespace host
