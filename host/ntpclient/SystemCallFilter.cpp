#include "ntpclient/SystemCallFilter.h"

#ifdef CLOCK_WITHOUT_FILTER

namespace host::ntp {

int installSystemCallFilter(const SealedPath& /*pipe*/) {
  return 0;
}

}  // namespace host::ntp

#else

#include <fcntl.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <memory>

#include "ntpclient/PipeReport.h"
#include "ntpclient/SealedPath.h"

namespace host::ntp {
namespace {

using Filter = std::unique_ptr<void, decltype(&::seccomp_release)>;

// Allowed with any arguments, as they only use what the program already has. Some are the names of
// the same calls on other machines.
constexpr int kAllowed[] = {
    SCMP_SYS(brk),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_gettime64),
    SCMP_SYS(close),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(fstat),
    SCMP_SYS(fstat64),
    SCMP_SYS(futex),
    SCMP_SYS(getrandom),
    SCMP_SYS(poll),
    SCMP_SYS(ppoll),
    SCMP_SYS(ppoll_time64),
    SCMP_SYS(recv),
    SCMP_SYS(recvfrom),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(send),
    SCMP_SYS(sendto),
    SCMP_SYS(write),
};

// Adds rules up to the first failure, which it keeps.
class Rules {
 public:
  explicit Rules(const Filter& filter) : m_filter(filter.get()) {}

  void allow(int call, std::initializer_list<scmp_arg_cmp> conditions = {}) {
    if (m_error != 0) return;
    m_error = seccomp_rule_add_array(m_filter, SCMP_ACT_ALLOW, call,
                                     static_cast<unsigned>(conditions.size()), conditions.begin());
  }

  [[nodiscard]] int error() const { return m_error; }

 private:
  void* const m_filter;  // libseccomp's scmp_filter_ctx
  int m_error = 0;
};

scmp_arg_cmp is(unsigned argument, std::uint64_t value) {
  return {argument, SCMP_CMP_EQ, value, 0};
}

scmp_arg_cmp hasNone(unsigned argument, std::uint64_t bits) {
  return {argument, SCMP_CMP_MASKED_EQ, bits, 0};
}

// A filter sees the address of a name, not its text. The sealed memory there can no longer be
// unmapped, mapped over or made writable.
void allowPipe(Rules& rules, const SealedPath& pipe) {
  const auto name = reinterpret_cast<std::uintptr_t>(pipe.get());
  rules.allow(SCMP_SYS(openat), {is(1, name), is(2, kPipeFlags)});
  rules.allow(SCMP_SYS(open), {is(0, name), is(1, kPipeFlags)});
  rules.allow(SCMP_SYS(newfstatat), {is(3, AT_EMPTY_PATH)});  // fstat
  rules.allow(SCMP_SYS(ioctl), {is(1, FIONREAD)});
}

void allowDatagrams(Rules& rules) {
  for (const unsigned family : {unsigned{AF_INET}, unsigned{AF_INET6}}) {
    rules.allow(SCMP_SYS(socket),
                {is(0, family), is(1, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK), is(2, 0)});
  }
}

// No executable memory, and none that replaces other memory.
void allowMemory(Rules& rules) {
  for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2)}) {
    rules.allow(call, {hasNone(2, PROT_EXEC), hasNone(3, MAP_FIXED | MAP_FIXED_NOREPLACE)});
  }
}

int install(const SealedPath& pipe) {
  const Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)), &::seccomp_release);
  if (!filter) return -ENOMEM;
  Rules rules(filter);
  for (const int call : kAllowed) rules.allow(call);
  allowPipe(rules, pipe);
  allowDatagrams(rules);
  allowMemory(rules);
  return rules.error() != 0 ? rules.error() : seccomp_load(filter.get());
}

}  // namespace

int installSystemCallFilter(const SealedPath& pipe) {
  return -install(pipe);
}

}  // namespace host::ntp

#endif
