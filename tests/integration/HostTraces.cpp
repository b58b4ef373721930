#include "integration/HostTraces.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "integration/Programs.h"
#include "support/FileContent.h"

namespace integration {
namespace {

constexpr std::chrono::seconds kUntilThereIsOne(30);

// Words that each end with a zero; none of a process that has gone.
Words commandLineOf(const std::filesystem::path& process) {
  const std::string text = support::contentOf(process / "cmdline");
  Words words;
  for (auto begin = text.begin(); begin != text.end();) {
    const auto end = std::find(begin, text.end(), '\0');
    words.emplace_back(begin, end);
    begin = end == text.end() ? end : end + 1;
  }
  return words;
}

bool isParentOf(const std::filesystem::path& process, pid_t parent) {
  return support::contentOf(process / "status").find("\nPPid:\t" + std::to_string(parent) + "\n") !=
         std::string::npos;
}

std::vector<std::filesystem::path> processes() {
  std::vector<std::filesystem::path> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos) found.push_back(entry.path());
  }
  return found;
}

std::filesystem::path folderAmong(const Words& words) {
  const auto state = std::find(words.begin(), words.end(), "--state");
  if (words.end() - state < 2) return {};
  return std::filesystem::path(state[1]).parent_path();
}

}  // namespace

std::filesystem::path folderOfTheHostOf(pid_t program) {
  const auto deadline = std::chrono::steady_clock::now() + kUntilThereIsOne;
  while (std::chrono::steady_clock::now() < deadline) {
    for (const auto& process : processes()) {
      if (!isParentOf(process, program)) continue;
      auto folder = folderAmong(commandLineOf(process));
      if (!folder.empty()) return folder;
    }
  }
  return {};
}

bool livesSomebodyIn(const std::filesystem::path& folder) {
  const auto all = processes();
  return std::any_of(all.begin(), all.end(), [&folder](const auto& process) {
    return support::contentOf(process / "cmdline").find(folder.string()) != std::string::npos;
  });
}

}  // namespace integration
