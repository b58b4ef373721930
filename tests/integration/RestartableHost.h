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

// One telephone of this machine: a folder in memory, and the paused clockhost that runs in it,
// which can be ended and started any number of times. Owner: a test. Thread: one at a time.
class RestartableHost {
 public:
  // program: a clockhost. options: beside those for plug-in, state, socket, device root and speed.
  explicit RestartableHost(std::string program = CLOCKHOST, Words options = {});
  ~RestartableHost();  // kills

  // Starts it and does not wait. REQUIRES: none is running.
  void launch();

  // Waits until it answers a call. False: it ended instead, or did not within 30 seconds.
  [[nodiscard]] bool answers();

  // Ends it: a signal, then SIGKILL after the limit.
  Outcome end(int signal, std::chrono::seconds limit = std::chrono::seconds(30));

  [[nodiscard]] Program& program() { return *m_program; }

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
};

// What a file holds; empty without one.
[[nodiscard]] std::string contentOf(const std::filesystem::path& file);

// Whether it is a script that the service writes, from its first byte to its last.
[[nodiscard]] bool isWholeScript(const std::string& content);

}  // namespace integration
