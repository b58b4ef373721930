#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "integration/Programs.h"
#include "support/TemporaryFolder.h"

namespace integration {

// A clockhost with the built plug-in, paused, in a folder of its own; and the clockctl that works
// it. Owner: a test. Failure: the constructor throws when the host does not come up.
class RunningHost {
 public:
  // options: beside those for plug-in, state, socket, device root and speed. ctlOptions: those of
  // clockctl beside the socket.
  explicit RunningHost(const Words& options = {}, Words ctlOptions = {});

  // Runs clockctl to its end. words: verb and arguments.
  Outcome ctl(const Words& words);

  // Starts clockctl and leaves it running.
  std::unique_ptr<Program> startCtl(const Words& words);

  // Asks with a verb again and again, until its output holds the text; false after 30 seconds.
  bool waitFor(const Words& words, const std::string& text);

  Program& program() { return *m_host; }
  [[nodiscard]] const std::filesystem::path& folder() const { return m_folder.path(); }
  [[nodiscard]] std::filesystem::path socket() const { return m_folder / "socket"; }
  [[nodiscard]] std::filesystem::path controlSocket() const { return m_folder / "socket.control"; }

 private:
  Words ctlWords(const Words& words) const;

  support::TemporaryFolder m_folder;
  const Words m_ctlOptions;
  std::unique_ptr<Program> m_host;
  int m_runs = 0;
};

}  // namespace integration
