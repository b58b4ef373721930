#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/Descriptor.h"
#include "base/Mutex.h"

namespace host {

// The file that runs for a program of the device, and what it gets.
struct MappedProgram {
  std::string path;
  // A stand-in of the build, which gets only the environment variables that it knows.
  bool standIn;
  // Opens the descriptor that the program inherits besides the standard ones; may be empty.
  std::function<Descriptor()> openChannel;
};

// Maps programs of the device to files of this machine.
// Owner: the process. Thread: any.
class ProgramMap {
 public:
  [[nodiscard]] static ProgramMap& instance();

  // Maps `devicePath` to `path`.
  void set(const std::string& devicePath, const std::string& path);

  // A folder with stand-ins, which have the programs' names; empty: none.
  void setStandInFolder(const std::string& folder);

  // Lets a program without mapping and stand-in run as itself. By default it never runs: the
  // machine's own NTP client would set the machine's clock.
  void allowDevicePrograms();

  // At each start the program inherits a descriptor from `open`, called on any thread; an empty
  // `open` ends that. CLOCKHOST_CLOCK_FD in its environment holds the number.
  void giveChannel(const std::string& devicePath, std::function<Descriptor()> open);

  // Removes all of the above.
  void clear();

  // The first of: the mapping; the stand-in, if executable; `devicePath` itself, if allowed.
  [[nodiscard]] std::optional<MappedProgram> resolve(const std::string& devicePath) const;

 private:
  [[nodiscard]] std::optional<MappedProgram> fileOf(const std::string& devicePath) const
      CLOCK_REQUIRES(m_mutex);

  mutable Mutex m_mutex;
  std::map<std::string, std::string> m_paths CLOCK_GUARDED_BY(m_mutex);
  std::map<std::string, std::function<Descriptor()>> m_channels CLOCK_GUARDED_BY(m_mutex);
  std::string m_standIns CLOCK_GUARDED_BY(m_mutex);
  bool m_devicePrograms CLOCK_GUARDED_BY(m_mutex) = false;
};

}  // namespace host
