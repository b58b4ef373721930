#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <tuple>

namespace bench {

// The files of a folder and of those in it, without databases and their logs: those have counts of
// their own. Failure: std::filesystem::filesystem_error from the constructor.
class FolderState {
 public:
  explicit FolderState(const std::filesystem::path& folder);

  // The name of one that is new, written again, replaced or gone; empty: there is none.
  [[nodiscard]] std::string changeSince(const FolderState& before) const;

 private:
  // Its number in the file system, its size, and when it was written, in nanoseconds.
  using File = std::tuple<ino_t, std::int64_t, std::int64_t>;
  using Files = std::map<std::string, File>;

  [[nodiscard]] static bool isDatabase(const std::filesystem::path& file);
  [[nodiscard]] static File stateOf(const std::filesystem::path& file);

  Files m_files;
};

}  // namespace bench
