#pragma once

#include <stop_token>
#include <string>

#include "base/Descriptor.h"
#include "telephone/ChildProgram.h"
#include "telephone/HostRequests.h"

namespace panel {

// A recording of one telephone by `clockctl record`, which is another process, so that it holds
// what the page does, too. Owner: the panel. Thread: one at a time. Failure: host::Error, one line.
class Recording {
 public:
  // Returns once no later step is missed.
  Recording(const HostSockets& sockets, const std::stop_token& ending);

  // Ends it; blocks as replay() does. {"scenario": TEXT, "said": what clockctl says of it}
  [[nodiscard]] host::Json finish(const std::stop_token& ending);

 private:
  host::Descriptor m_file;  // in memory
  ChildProgram m_recorder;
};

// Runs a scenario in a telephone of its own. {"passed": true}, or {"passed": false, "output": what
// clockhost prints}. Thread: any; blocks up to a minute, or until `ending`.
[[nodiscard]] host::Json replay(const std::string& scenario, const std::stop_token& ending);

}  // namespace panel
