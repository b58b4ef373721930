#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Child.h"
#include "support/TemporaryFolder.h"

namespace bench {

using Words = std::vector<std::string>;

// A clockhost with the built plug-in. Owner: a measurement.
class HostProgram {
 public:
  // folder: for its sockets. state: its state folder. options: in addition to those for the
  // plug-in, the state folder and the sockets.
  HostProgram(const support::TemporaryFolder& folder, const std::filesystem::path& state,
              const Words& options = {}, const Words& environment = {});

  [[nodiscard]] const std::filesystem::path& socket() const { return m_socket; }
  [[nodiscard]] const std::filesystem::path& controlSocket() const { return m_controlSocket; }
  [[nodiscard]] pid_t process() const { return m_child.id(); }

 private:
  const std::filesystem::path m_socket;
  const std::filesystem::path m_controlSocket;
  Child m_child;
};

// A minimal program of baselines/, which listens at a socket.
class BaselineProgram {
 public:
  BaselineProgram(const support::TemporaryFolder& folder, const std::string& name,
                  const std::string& argument);

  [[nodiscard]] const std::filesystem::path& socket() const { return m_socket; }
  [[nodiscard]] pid_t process() const { return m_child.id(); }

 private:
  const std::filesystem::path m_socket;
  Child m_child;
};

// A folder on a disk, beside the programs. Throws std::runtime_error when that is in memory.
[[nodiscard]] std::filesystem::path diskFolder();

}  // namespace bench
