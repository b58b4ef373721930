#include "FolderState.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>
#include <vector>

namespace bench {

FolderState::FolderState(const std::filesystem::path& folder) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_directory() && !isDatabase(entry.path()))
      m_files.emplace(entry.path().string(), stateOf(entry.path()));
  }
}

bool FolderState::isDatabase(const std::filesystem::path& file) {
  return file.extension().string().starts_with(".db");
}

FolderState::File FolderState::stateOf(const std::filesystem::path& file) {
  struct stat found {};
  if (lstat(file.c_str(), &found) != 0) {
    throw std::system_error(errno, std::generic_category(), file.string());
  }
  constexpr std::int64_t kInSecond = 1'000'000'000;
  return {found.st_ino, found.st_size, found.st_mtim.tv_sec * kInSecond + found.st_mtim.tv_nsec};
}

std::string FolderState::changeSince(const FolderState& before) const {
  std::vector<Files::value_type> changed;
  std::set_symmetric_difference(m_files.begin(), m_files.end(), before.m_files.begin(),
                                before.m_files.end(), std::back_inserter(changed));
  return changed.empty() ? "" : changed.front().first;
}

}  // namespace bench
