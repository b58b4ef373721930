#pragma once

#include <string>

#include "base/Descriptor.h"
#include "telephone/ChildProgram.h"
#include "telephone/HostRequests.h"

namespace panel {

// A file in memory, which children of this process open by its path. Owner: its creator. Thread:
// one at a time. Failure: host::Error.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& text = "");

  [[nodiscard]] std::string path() const;
  [[nodiscard]] std::string read() const;

 private:
  host::Descriptor m_file;
};

// A recording of one telephone by `clockctl record`, which is another process, so that it holds
// what the page does, too. Owner: the panel. Thread: one at a time. Failure: host::Error, one line.
class Recording {
 public:
  explicit Recording(const HostSockets& sockets);  // returns once no later step is missed

  // Ends it. Returns the scenario.
  [[nodiscard]] std::string finish();

 private:
  MemoryFile m_file;
  ChildProgram m_recorder;
};

// Runs a scenario in a telephone of its own. {"passed": true}, or {"passed": false, "line": its
// number, 0 if none, "output": what clockhost prints}. Thread: any; blocks up to a minute.
[[nodiscard]] host::Json replay(const std::string& scenario);

}  // namespace panel
