#include "ntpclient/SystemCallFilter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/Descriptor.h"
#include "clock/ClockMessage.h"
#include "host/ntpclient/FakeSntpServer.h"
#include "ntpclient/PipeReport.h"
#include "ntpclient/SealedPath.h"
#include "support/InChild.h"
#include "support/TemporaryFolder.h"

#ifndef CLOCK_WITHOUT_FILTER
#include <seccomp.h>
#endif

namespace host::ntp {
namespace {

// Calls are tried in a child process, as the filter is permanent.
class UnderTheFilter : public testing::Test {
 protected:
  UnderTheFilter() { EXPECT_EQ(::mkfifo(m_pipe.c_str(), 0600), 0); }

  // The errno of a system call under the filter, 0 for success; -1 when the filter is refused.
  int errorOf(const std::function<long()>& call) const {
    const int status = support::statusInChild([&] {
      if (installSystemCallFilter(m_sealed) != 0) return 255;
      return call() >= 0 ? 0 : errno;
    });
    return status == 255 ? -1 : status;
  }

  const support::TemporaryFolder m_folder;
  const std::string m_pipe = m_folder / "ntpclient";
  const SealedPath m_sealed{m_pipe};
};

#ifdef CLOCK_WITHOUT_FILTER

TEST_F(UnderTheFilter, NothingIsDeniedInABuildWithoutFilter) {
  EXPECT_EQ(errorOf([] { return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0); }), 0);
}

#else

// The calls use openat, because open() is the host's own here and would copy the name.
struct Call {
  const char* name;
  std::function<long()> make;
};

long map(void* at, int protection, int flags = 0) {
  flags |= MAP_PRIVATE | MAP_ANONYMOUS;
  return ::mmap(at, 1, protection, flags, -1, 0) == MAP_FAILED ? -1 : 0;
}

TEST_F(UnderTheFilter, WhatTheClientDoesNotNeedIsDenied) {
  const std::string other = m_folder / "other";
  const std::string same = m_pipe;  // the same name at another address
  char* const sealed = const_cast<char*>(m_sealed.get());
  const timespec now{};
  char* const arguments[] = {nullptr};
  const Call calls[] = {
      {"open for reading", [] { return ::openat(AT_FDCWD, "/etc/passwd", O_RDONLY | O_CLOEXEC); }},
      {"open for writing",
       [&] { return ::openat(AT_FDCWD, other.c_str(), kPipeFlags | O_CREAT, 0600); }},
      {"open another file as the pipe", [] { return ::openat(AT_FDCWD, "/dev/null", kPipeFlags); }},
      {"open the same name at another address",
       [&] { return ::openat(AT_FDCWD, same.c_str(), kPipeFlags); }},
      {"open the pipe for reading too",
       [&] { return ::openat(AT_FDCWD, sealed, O_RDWR | O_NONBLOCK); }},
      {"create at the pipe's name",
       [&] { return ::openat(AT_FDCWD, sealed, kPipeFlags | O_CREAT, 0600); }},
      {"unlink", [&] { return ::unlink(same.c_str()); }},
      {"execve", [&] { return ::execve("/bin/true", arguments, arguments); }},
      {"fork", [] { return ::fork(); }},
      {"kill", [] { return ::kill(::getppid(), 0); }},
      {"ptrace", [] { return ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr); }},
      {"Unix socket", [] { return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0); }},
      {"Unix datagrams",
       [] { return ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }},
      {"TCP", [] { return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }},
      {"connect", [] { return ::connect(0, nullptr, 0); }},
      {"pass a descriptor", [] { return ::sendmsg(0, nullptr, 0); }},
      {"set the clock",
       [&] {
         return ::clock_settime(CLOCK_PROCESS_CPUTIME_ID, &now);
       }},  // a clock that no process can set
      {"make the name writable", [&] { return ::mprotect(sealed, 1, PROT_READ | PROT_WRITE); }},
      {"unmap the name", [&] { return ::munmap(sealed, 1); }},
      {"map over the name", [&] { return map(sealed, PROT_READ | PROT_WRITE, MAP_FIXED); }},
      {"map executable memory", [] { return map(nullptr, PROT_READ | PROT_EXEC); }},
  };
  for (const Call& call : calls) EXPECT_EQ(errorOf(call.make), EPERM) << call.name;
}

TEST_F(UnderTheFilter, WhatTheClientNeedsIsAllowed) {
  const Descriptor reader(::open(m_pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  const Call calls[] = {
      {"open the pipe", [&] { return ::openat(AT_FDCWD, m_sealed.get(), kPipeFlags); }},
      {"IPv4", [] { return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }},
      {"heap", [] { return ::syscall(SYS_brk, 0); }},
      {"new memory", [] { return map(nullptr, PROT_READ | PROT_WRITE); }},
      {"an exception",
       []() -> long {
         try {
           throw std::runtime_error("on purpose");
         } catch (const std::exception& error) {
           return ::write(STDERR_FILENO, "", 0);
         }
       }},
  };
  for (const Call& call : calls) EXPECT_EQ(errorOf(call.make), 0) << call.name;
}

// From now on this process cannot install filters, as on a system without them.
bool refuseFilters() {
  void* const refusing = seccomp_init(SCMP_ACT_ALLOW);
  seccomp_rule_add(refusing, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(seccomp), 0);
  seccomp_rule_add(refusing, SCMP_ACT_ERRNO(EINVAL), SCMP_SYS(prctl), 1,
                   scmp_arg_cmp{0, SCMP_CMP_EQ, PR_SET_SECCOMP, 0});
  return seccomp_load(refusing) == 0;
}

TEST_F(UnderTheFilter, ARefusedFilterIsAnErrorAndChangesNothing) {
  EXPECT_EQ(support::statusInChild([this] {
              const bool refused = refuseFilters() && installSystemCallFilter(m_sealed) > 0;
              const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
              return refused && socket.valid() ? 0 : 1;
            }),
            0);
}

TEST_F(UnderTheFilter, TheClientReportsARefusedFilterToItsHost) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  const Descriptor host(ends[0]);
  Descriptor client(ends[1]);
  const FakeSntpServer server;
  std::string channel = std::string(kClockChannelVariable) + "=3";
  std::string port = "NTPCLIENT_PORT=" + server.port();
  std::vector<std::string> words = {
      NTPCLIENT_PROGRAM, "-s", "-c", "525600", "-i", "3600", "-n", "15", "-h", "127.0.0.1"};
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  char* const variables[] = {channel.data(), port.data(), nullptr};
  const pid_t child = ::fork();
  if (child == 0) {
    if (refuseFilters() && ::dup2(client.get(), 3) == 3) {
      ::execve(arguments[0], arguments.data(), variables);
    }
    ::_exit(1);
  }
  client.reset();
  pollfd waited{host.get(), POLLIN, 0};
  EXPECT_EQ(::poll(&waited, 1, static_cast<int>(kLong.count())), 1);
  std::array<char, 64> message{};
  const ssize_t size = ::recv(host.get(), message.data(), message.size(), MSG_DONTWAIT);
  NoFilterNotice notice{};
  std::memcpy(&notice, message.data(), sizeof notice);
  EXPECT_EQ(size, static_cast<ssize_t>(sizeof notice));
  EXPECT_GT(notice.error, 0);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

#endif

TEST(SealedPath, HasItsOwnPageOfMemory) {
  const SealedPath path("/tmp/a b");
  EXPECT_STREQ(path.get(), "/tmp/a b");
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(path.get()) % 4096, 0U);
}

}  // namespace
}  // namespace host::ntp
