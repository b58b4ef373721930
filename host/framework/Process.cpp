#include "Process.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "Logging.h"
#include "base/LogLevels.h"
#include "base/Mutex.h"
#include "framework/ChildEnvironment.h"
#include "framework/ProgramMap.h"

namespace {

// From SIGTERM to SIGKILL.
constexpr std::chrono::milliseconds kGrace{300};

// The one descriptor that a child may have besides the standard ones.
constexpr int kChannel = STDERR_FILENO + 1;

std::vector<std::string> copied(char* const* texts) {
  std::vector<std::string> copies;
  for (; texts != nullptr && *texts != nullptr; ++texts) copies.emplace_back(*texts);
  return copies;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

void waitForEnd(pid_t pid) {
  while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
  }
}

// The attributes and descriptors of a child.
class SpawnPlan {
 public:
  SpawnPlan() {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
  }
  ~SpawnPlan() {
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;

  // Makes the descriptor the child's standard output and standard error. REQUIRES: called first.
  bool passOutput(int output) {
    return posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO) == 0 &&
           posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO) == 0;
  }

  // Passes the descriptor to the child as number kChannel. REQUIRES: called before prepare.
  bool pass(int channel) {
    return posix_spawn_file_actions_adddup2(&actions, channel, kChannel) == 0;
  }

  // Resets the signals that the parent ignores or blocks.
  // descriptors: how many the child keeps, from 0 on, if it leads a group.
  bool prepare(bool ownGroup, const std::optional<std::string>& folder, int descriptors) {
    sigset_t none;
    sigemptyset(&none);
    sigset_t reset;
    sigemptyset(&reset);
    for (const int signal :
         {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGCHLD, SIGUSR1, SIGUSR2, SIGXFSZ})
      sigaddset(&reset, signal);
    short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    if (ownGroup) flags |= POSIX_SPAWN_SETPGROUP;  // of the child's own id
    return posix_spawnattr_setsigmask(&attributes, &none) == 0 &&
           posix_spawnattr_setsigdefault(&attributes, &reset) == 0 &&
           posix_spawnattr_setpgroup(&attributes, 0) == 0 &&
           posix_spawnattr_setflags(&attributes, flags) == 0 &&
           (!folder || posix_spawn_file_actions_addchdir_np(&actions, folder->c_str()) == 0) &&
           (!ownGroup || posix_spawn_file_actions_addclosefrom_np(&actions, descriptors) == 0);
  }

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

void logNotStarted(const std::string& program, const char* cause) {
  logAppUni("clockhost", host::kLogWarning, __FILE__, __LINE__, "cannot start \"%s\": %s",
            program.c_str(), cause);
}

void logEnd(const std::string& program, const siginfo_t& ended) {
  if (ended.si_code != CLD_EXITED) {
    logAppUni("clockhost", host::kLogWarning, __FILE__, __LINE__, "\"%s\" was ended by signal %d",
              program.c_str(), ended.si_status);
  } else {
    const int level = ended.si_status == 0 ? host::kLogInfo : host::kLogWarning;
    logAppUni("clockhost", level, __FILE__, __LINE__, "\"%s\" ended with status %d",
              program.c_str(), ended.si_status);
  }
}

// A running child, and the thread that reaps it as soon as it ends.
class RunningChild {
 public:
  RunningChild(pid_t pid, bool leadsGroup, std::string program)
      : m_pid(pid),
        m_leadsGroup(leadsGroup),
        m_program(std::move(program)),
        m_reaper([this] { reap(); }) {}

  ~RunningChild() {
    end();
    m_reaper.join();
  }
  RunningChild(const RunningChild&) = delete;
  RunningChild& operator=(const RunningChild&) = delete;

 private:
  // The child stays a zombie until this thread has the lock: before `m_reaped` is set, the system
  // does not reuse its id, which is also the group's.
  void reap() {
    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(m_pid), &ended, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {
    }
    host::MutexLock lock(m_mutex);
    if (m_leadsGroup) kill(-m_pid, SIGKILL);  // ends the processes that the child left behind
    waitForEnd(m_pid);
    m_reaped = true;
    m_changed.notify_all();
    const bool byItself = !m_ending;
    lock.unlock();
    if (byItself) logEnd(m_program, ended);
  }

  void end() {
    host::MutexLock lock(m_mutex);
    if (m_reaped) return;
    m_ending = true;
    signalAll(SIGTERM);
    if (m_changed.wait_for(lock.native(), kGrace,
                           [this]() CLOCK_REQUIRES(m_mutex) { return m_reaped; }))
      return;
    signalAll(SIGKILL);
  }

  // REQUIRES: not reaped.
  void signalAll(int signal) const CLOCK_REQUIRES(m_mutex) {
    kill(m_leadsGroup ? -m_pid : m_pid, signal);
  }

  const pid_t m_pid;
  const bool m_leadsGroup;
  const std::string m_program;
  host::Mutex m_mutex;
  std::condition_variable m_changed;
  bool m_ending CLOCK_GUARDED_BY(m_mutex) = false;  // the host ends it
  bool m_reaped CLOCK_GUARDED_BY(m_mutex) = false;
  std::thread m_reaper;  // last: it uses all of the above
};

// For a child without a thread to reap it.
void endAtOnce(pid_t pid) {
  kill(pid, SIGKILL);
  waitForEnd(pid);
}

}  // namespace

struct Process::Impl {
  int options;
  std::vector<std::string> arguments;
  std::vector<std::string> environment;
  std::optional<std::string> folder;
  std::optional<RunningChild> child;

  [[nodiscard]] bool ownGroup() const { return (options & ownProcessGroup) != 0; }

  // The errno with which the spawn would fail, or 0. Checked before, because under an emulator the
  // spawn does not report it.
  [[nodiscard]] int obstacle(const std::string& program) const {
    if (access(program.c_str(), X_OK) != 0) return errno;
    return folder && access(folder->c_str(), X_OK) != 0 ? errno : 0;
  }

  // The child's id, or 0 if it could not be started.
  pid_t spawn() {
    const auto program = host::ProgramMap::instance().resolve(arguments.front());
    if (!program) {
      logNotStarted(arguments.front(),
                    "there is no stand-in for it; name a program with --program");
      return 0;
    }
    pid_t pid = 0;
    int error = obstacle(program->path);
    if (error == 0) error = spawn(*program, pid);
    if (error == 0) return pid;
    logNotStarted(program->path, std::strerror(error));
    return 0;
  }

 private:
  // Invalid: the child inherits standard output and standard error.
  [[nodiscard]] host::Descriptor outputOf(const host::MappedProgram& program) const {
    host::Descriptor output = program.openOutput ? program.openOutput() : host::Descriptor();
    if (program.openOutput && !output.valid()) {
      logAppUni("clockhost", host::kLogWarning, __FILE__, __LINE__,
                "the output of \"%s\" goes to the host's own, and not into the log: %s",
                arguments.front().c_str(), std::strerror(errno));
    }
    return output;
  }

  // 0, or an errno.
  int spawn(const host::MappedProgram& program, pid_t& pid) {
    const host::Descriptor channel =
        program.openChannel ? program.openChannel() : host::Descriptor();
    if (program.openChannel && !channel.valid()) return errno;
    const host::Descriptor output = outputOf(program);
    SpawnPlan plan;
    if (output.valid() && !plan.passOutput(output.get())) return ENOMEM;
    if (channel.valid() && !plan.pass(channel.get())) return ENOMEM;
    if (!plan.prepare(ownGroup(), folder, channel.valid() ? kChannel + 1 : kChannel)) return ENOMEM;
    std::vector<std::string> given =
        host::childEnvironment(environment, program.standIn, channel.valid() ? kChannel : -1);
    const std::vector<char*> words = pointersTo(arguments);
    const std::vector<char*> variables = pointersTo(given);
    return posix_spawn(&pid, program.path.c_str(), &plan.actions, &plan.attributes, words.data(),
                       variables.data());
  }
};

Process::Process(int options, char* const* arguments, char* const* environment,
                 const char* workingFolder)
    : m_impl(std::make_unique<Impl>()) {
  m_impl->options = options;
  m_impl->arguments = copied(arguments);
  m_impl->environment = copied(environment);
  if (workingFolder != nullptr) m_impl->folder = workingFolder;
}

Process::~Process() = default;

int Process::launch() {
  if (m_impl->arguments.empty() || m_impl->child) return 0;
  const pid_t pid = m_impl->spawn();
  if (pid <= 0) return 0;
  try {
    m_impl->child.emplace(pid, m_impl->ownGroup(), m_impl->arguments.front());
  } catch (const std::system_error& error) {
    endAtOnce(pid);
    logNotStarted(m_impl->arguments.front(), std::strerror(error.code().value()));
    return 0;
  }
  return pid;
}
