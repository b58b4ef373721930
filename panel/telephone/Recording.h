#pragma once

#include <filesystem>
#include <string>

#include "telephone/ChildProgram.h"
#include "telephone/HostRequests.h"

namespace panel {

// A folder for one file, removed with its content. Owner: its creator. Thread: one at a time.
// Failure: host::Error from the constructor.
class TemporaryFile {
 public:
  TemporaryFile();
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  [[nodiscard]] std::string path() const { return (m_folder / "session.scenario").string(); }
  void write(const std::string& text) const;
  [[nodiscard]] std::string read() const;

 private:
  std::filesystem::path m_folder;
};

// A recording of one telephone by `clockctl record`, which is another process, so that it holds
// what the page does, too. Owner: the panel. Thread: one at a time. Failure: host::Error, one line.
class Recording {
 public:
  explicit Recording(const HostSockets& sockets);  // returns once no later step is missed

  // Ends it. Returns the scenario.
  [[nodiscard]] std::string finish();

 private:
  TemporaryFile m_file;
  ChildProgram m_recorder;
};

// Runs a scenario in a telephone of its own. {"passed": true}, or {"passed": false, "line": its
// number, 0 if none, "output": what clockhost prints}. Thread: any; blocks up to a minute.
[[nodiscard]] host::Json replay(const std::string& scenario);

}  // namespace panel
