#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "base/Mutex.h"
#include "remote/Descriptor.h"

namespace host {

// What runs for a program of the device, and what it gets.
struct MappedProgram {
  std::string path;
  // A stand-in of the build. Of the environment that it is started with it gets only the variables
  // that it knows.
  bool standIn;
  // Opens what the program inherits beside the standard descriptors; may be empty.
  std::function<Descriptor()> openChannel;
};

// Which file of this machine runs when the device's program is asked for.
// Owner: the process. Thread: any.
class ProgramMap {
 public:
  [[nodiscard]] static ProgramMap& instance();

  // From now on `devicePath` means `path`.
  void set(const std::string& devicePath, const std::string& path);

  // A folder with stand-ins, named as the programs are; empty: none.
  void setStandInFolder(const std::string& folder);

  // A program of the device that nothing stands in for runs as itself, if this machine has it.
  // Without this it never runs: the machine's own NTP client would set the machine's clock.
  void allowDevicePrograms();

  // The program gets a descriptor that `open` opens, on any thread, at each start; an empty one
  // ends that. CLOCKHOST_CLOCK_FD in its environment says which number it has.
  void giveChannel(const std::string& devicePath, std::function<Descriptor()> open);

  // Forgets all of it.
  void clear();

  // In this order: what was set; the stand-in, if it can be executed; `devicePath` itself, if that
  // is allowed; else nothing.
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
