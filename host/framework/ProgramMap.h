#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/Descriptor.h"
#include "base/Mutex.h"

namespace host {

// The file to run for a program of the device.
struct MappedProgram {
  std::string path;
  // A stand-in of the build: it gets only the environment variables that it uses.
  bool standIn;
  // Opens the descriptor that the program inherits besides the standard ones; may be empty.
  std::function<Descriptor()> openChannel;
  // Opens the descriptor that becomes its standard output and standard error; may be empty.
  std::function<Descriptor()> openOutput;
};

// Maps programs of the device to files of this machine.
// Owner: the process. Thread: any.
class ProgramMap {
 public:
  [[nodiscard]] static ProgramMap& instance();

  // Maps `devicePath` to `path`.
  void set(const std::string& devicePath, const std::string& path);

  // The folder of the stand-ins, which have the programs' names. Empty: none.
  void setStandInFolder(const std::string& folder);

  // Permits to run the file at the device path if there is no mapping and no stand-in. By default
  // it never runs: the machine's own NTP client would set the machine's clock.
  void allowDevicePrograms();

  // Makes the program inherit a descriptor from `open`, which is called, on any thread, at each
  // start. CLOCKHOST_CLOCK_FD in its environment holds the number. An empty `open` ends that.
  void giveChannel(const std::string& devicePath, std::function<Descriptor()> open);

  // Gives each program a descriptor from `open` as standard output and standard error. `open` is
  // called with the last part of the device path, on any thread, at each start. An empty `open`
  // ends that: programs then inherit the process's own.
  void setOutput(std::function<Descriptor(const std::string& program)> open);

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
  std::function<Descriptor(const std::string&)> m_openOutput CLOCK_GUARDED_BY(m_mutex);
  std::string m_standIns CLOCK_GUARDED_BY(m_mutex);
  bool m_devicePrograms CLOCK_GUARDED_BY(m_mutex) = false;
};

}  // namespace host
