#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "integration/Programs.h"
#include "support/TemporaryFolder.h"

namespace host {
class RemoteClient;
}  // namespace host

namespace integration {

// A telephone on this machine: a folder in memory, a clockhost with a paused clock that can be
// ended and started again, and clockctl to control it. Owner: a test. Thread: one at a time.
class RestartableHost {
 public:
  // program: a clockhost. options: added to those for plug-in, state, socket, device root and
  // speed.
  explicit RestartableHost(std::string program = CLOCKHOST, const Words& options = {});
  ~RestartableHost();  // kills

  // Its command line. A later option overrides an earlier one of the same name.
  [[nodiscard]] Words words(const Words& more = {}) const;

  // Starts it, or a command that executes it, and does not wait. REQUIRES: none is running.
  void launch() { launch(m_words); }
  void launch(const Words& command);

  // Waits until it answers a call. False: it ended, or 30 seconds passed.
  [[nodiscard]] bool answers();

  // Starts it and waits until it answers; throws when it does not. REQUIRES: none is running.
  void start(const Words& more = {});

  // Ends it with a signal, and with SIGKILL after the limit.
  Outcome end(int signal, std::chrono::seconds limit = std::chrono::seconds(30));

  // Runs a second host in the same folder, which must fail to start, to its end.
  [[nodiscard]] Outcome startAnother(const Words& more = {}) const;

  [[nodiscard]] Program& program() const { return *m_program; }

  // Runs clockctl to its end. words: options, verb and arguments.
  Outcome ctl(const Words& words);

  // Starts clockctl and does not wait for its end.
  std::unique_ptr<Program> startCtl(const Words& words);
  [[nodiscard]] Words ctlWords(const Words& words) const;

  // Repeats a clockctl command until its output contains the text; false after 30 seconds.
  bool waitFor(const Words& words, const std::string& text);

  // For calls, or for control requests. Throws host::NoHost.
  [[nodiscard]] std::unique_ptr<host::RemoteClient> connect() const;
  [[nodiscard]] std::unique_ptr<host::RemoteClient> connectControl() const;

  [[nodiscard]] const std::filesystem::path& folder() const { return m_folder.path(); }
  [[nodiscard]] std::filesystem::path socket() const { return m_folder / "socket"; }
  [[nodiscard]] std::filesystem::path controlSocket() const { return m_folder / "socket.control"; }
  [[nodiscard]] std::filesystem::path state() const { return m_folder / "state"; }
  [[nodiscard]] std::filesystem::path script() const { return state() / "setupTZ.sh"; }
  [[nodiscard]] std::filesystem::path pipe() const;

  // Writes a time report into the pipe as the NTP client does; false when no listener has opened
  // the pipe.
  [[nodiscard]] bool report(std::uint32_t secondsSinceEpoch) const;

 private:
  const support::TemporaryFolder m_folder{support::folderInMemory()};
  Words m_words;
  std::unique_ptr<Program> m_program;
  int m_runs = 0;  // of clockctl
};

// A RestartableHost that the constructor starts. Failure: the constructor throws when the host does
// not answer.
class RunningHost : public RestartableHost {
 public:
  explicit RunningHost(const Words& options = {}) : RestartableHost(CLOCKHOST, options) { start(); }
};

// Whether it is a complete time zone script of the service, with nothing before or after it.
[[nodiscard]] bool isWholeScript(const std::string& content);

}  // namespace integration
