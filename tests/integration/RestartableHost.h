#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "integration/Programs.h"
#include "support/TemporaryFolder.h"

namespace host {
class RemoteClient;
}  // namespace host

namespace integration {

// One telephone of this machine: a folder in memory, the paused clockhost that runs in it, which
// can be ended and started any number of times, and the clockctl that asks it. Owner: a test.
// Thread: one at a time.
class RestartableHost {
 public:
  // program: a clockhost. options: beside those for plug-in, state, socket, device root and speed.
  explicit RestartableHost(std::string program = CLOCKHOST, const Words& options = {});
  ~RestartableHost();  // kills

  // Its command line. Of two options with the same name the later one counts.
  [[nodiscard]] Words words(const Words& more = {}) const;

  // Starts it, or any command that becomes it, and does not wait. REQUIRES: none is running.
  void launch() { launch(m_words); }
  void launch(const Words& command);

  // Waits until it answers a call. False: it ended instead, or did not within 30 seconds.
  [[nodiscard]] bool answers();

  // Starts it and waits until it answers; throws when it does not. An earlier one has ended.
  void start(const Words& more = {});

  // Ends it: a signal, then SIGKILL after the limit.
  Outcome end(int signal, std::chrono::seconds limit = std::chrono::seconds(30));

  // The outcome of another one in the same folder, which cannot start.
  [[nodiscard]] Outcome startAnother(const Words& more = {}) const;

  [[nodiscard]] Program& program() { return *m_program; }

  // Runs clockctl to its end. words: verb and arguments, after options if need be.
  Outcome ctl(const Words& words);

  // Starts clockctl and leaves it running.
  std::unique_ptr<Program> startCtl(const Words& words);
  [[nodiscard]] Words ctlWords(const Words& words) const;

  // Asks with a verb again and again, until its output holds the text; false after 30 seconds.
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

 private:
  const support::TemporaryFolder m_folder{support::folderInMemory()};
  Words m_words;
  std::unique_ptr<Program> m_program;
  int m_runs = 0;  // of clockctl
};

// ... that runs from the beginning. Failure: the constructor throws when it does not answer.
class RunningHost : public RestartableHost {
 public:
  explicit RunningHost(const Words& options = {}) : RestartableHost(CLOCKHOST, options) { start(); }
};

// Whether it is a script that the service writes, from its first byte to its last.
[[nodiscard]] bool isWholeScript(const std::string& content);

}  // namespace integration
