#pragma once

#include <filesystem>
#include <string>

#include "integration/RestartableHost.h"

namespace bench {

using integration::Words;

// A clockhost with the built plug-in, whose clock runs. Owner: a measurement.
class HostProgram : public integration::RestartableHost {
 public:
  // options: in addition to those for the plug-in, its folders and sockets. launcher: a command
  // that executes the rest of its command line. program: a clockhost.
  explicit HostProgram(const Words& options = {}, Words launcher = {},
                       std::string program = CLOCKHOST);
  ~HostProgram();  // stops the host with SIGTERM: a killed host would leave work to the next start
};

// A minimal program of baselines/, which listens at a socket.
class BaselineProgram {
 public:
  BaselineProgram(const std::string& name, const std::string& argument,
                  const std::filesystem::path& folder = BENCH_BASELINES);

  [[nodiscard]] std::filesystem::path socket() const { return m_folder / "socket"; }
  [[nodiscard]] const integration::Program& program() const { return m_program; }

 private:
  const support::TemporaryFolder m_folder{support::folderInMemory()};
  const integration::Program m_program;
};

// A folder on a disk, beside the programs. Throws std::runtime_error when that is in memory.
[[nodiscard]] std::filesystem::path diskFolder();

}  // namespace bench
