#include "integration/HostTraces.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "integration/Programs.h"
#include "support/Becomes.h"
#include "support/FileContent.h"

namespace integration {
namespace {

namespace fs = std::filesystem;

// Empty for a process that has ended.
Words commandLineOf(const fs::path& process) {
  std::istringstream text(support::contentOf(process / "cmdline"));
  Words words;
  for (std::string word; std::getline(text, word, '\0');) words.push_back(word);
  return words;
}

bool isChildOf(pid_t parent, const fs::path& process) {
  return support::contentOf(process / "status").find("\nPPid:\t" + std::to_string(parent) + "\n") !=
         std::string::npos;
}

std::vector<fs::path> processes() {
  std::vector<fs::path> found;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos) found.push_back(entry.path());
  }
  return found;
}

// The folder around the state folder in a host's command line; empty when it has none.
fs::path folderIn(const Words& words) {
  const auto option = std::find(words.begin(), words.end(), "--state");
  return words.end() - option < 2 ? fs::path() : fs::path(option[1]).parent_path();
}

}  // namespace

fs::path hostFolderOf(pid_t parent) {
  fs::path folder;
  support::becomesTrue([&] {
    for (const fs::path& process : processes()) {
      if (folder.empty() && isChildOf(parent, process)) folder = folderIn(commandLineOf(process));
    }
    return !folder.empty();
  });
  return folder;
}

bool isInUse(const fs::path& folder) {
  const auto all = processes();
  return std::any_of(all.begin(), all.end(), [&folder](const fs::path& process) {
    return support::contentOf(process / "cmdline").find(folder.string()) != std::string::npos;
  });
}

}  // namespace integration
