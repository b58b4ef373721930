#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Child.h"
#include "Folder.h"

namespace bench {

// A clockhost with the built plug-in, in folders of its own. Owner: a measurement.
class HostProgram {
 public:
  // state: of its saved settings. options: beside those for plug-in, state, socket, device root.
  HostProgram(const Folder& folder, const std::filesystem::path& state,
              const std::vector<std::string>& options = {});

  [[nodiscard]] const std::filesystem::path& socket() const { return m_socket; }
  [[nodiscard]] const std::filesystem::path& controlSocket() const { return m_controlSocket; }
  [[nodiscard]] pid_t process() const { return m_child.id(); }

 private:
  const std::filesystem::path m_socket;
  const std::filesystem::path m_controlSocket;
  Child m_child;
};

// A program of the floors, which listens at SOCKET as soon as it can.
class FloorProgram {
 public:
  // kind: as in floors/; arguments: beside the socket.
  FloorProgram(const Folder& folder, const std::string& kind,
               const std::vector<std::string>& arguments = {});

  [[nodiscard]] const std::filesystem::path& socket() const { return m_socket; }
  [[nodiscard]] pid_t process() const { return m_child.id(); }

 private:
  const std::filesystem::path m_socket;
  Child m_child;
};

}  // namespace bench
