#include "operator/ChildProcesses.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace host {
namespace {

namespace fs = std::filesystem;

// The program itself, or what an interpreter runs for it.
bool startedAs(pid_t id, const std::string& program) {
  std::ifstream commandLine("/proc/" + std::to_string(id) + "/cmdline");
  std::string word;
  for (int i = 0; i < 2 && std::getline(commandLine, word, '\0'); ++i) {
    if (fs::path(word).filename() == program) return true;
  }
  return false;
}

}  // namespace

std::optional<pid_t> childRunning(const std::string& program) {
  std::error_code error;
  for (const auto& thread : fs::directory_iterator("/proc/self/task", error)) {
    std::ifstream children(thread.path() / "children");
    for (pid_t id = 0; children >> id;) {
      if (startedAs(id, program)) return id;
    }
  }
  return std::nullopt;
}

std::string commandLineOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
  std::string line;
  for (std::string word; std::getline(file, word, '\0');) line += (line.empty() ? "" : " ") + word;
  return line;
}

}  // namespace host
