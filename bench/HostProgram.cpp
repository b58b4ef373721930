#include "HostProgram.h"

namespace bench {
namespace {

using Words = std::vector<std::string>;

Words joined(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

// A socket that an earlier program has left is not to be taken for the new one's.
std::filesystem::path freshSocket(const Folder& folder, const std::string& name) {
  std::filesystem::remove(folder / name);
  return folder / name;
}

}  // namespace

HostProgram::HostProgram(const Folder& folder, const std::filesystem::path& state,
                         const Words& options)
    : m_socket(freshSocket(folder, "host")),
      m_controlSocket(freshSocket(folder, "host.control")),
      m_child(joined({BENCH_CLOCKHOST, "--plugin", BENCH_PLUGIN, "--state", state, "--socket",
                      m_socket, "--device-root", folder / "root"},
                     options)) {}

FloorProgram::FloorProgram(const Folder& folder, const std::string& kind, const Words& arguments)
    : m_socket(freshSocket(folder, kind)),
      m_child(joined({std::string(BENCH_FLOORS) + "/floor_" + kind, m_socket}, arguments)) {}

}  // namespace bench
