#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace host {

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

  // Forgets all of it.
  void clear();

  // In this order: what was set; the stand-in, if it can be executed; `devicePath` itself, if that
  // is allowed; else nothing.
  [[nodiscard]] std::optional<std::string> resolve(const std::string& devicePath) const;

 private:
  mutable std::mutex m_mutex;
  std::map<std::string, std::string> m_paths;
  std::string m_standIns;
  bool m_devicePrograms = false;
};

}  // namespace host
