#pragma once

#include <filesystem>
#include <vector>

namespace host {

// Each job is a process with a telephone and its threads.
inline constexpr int kMostJobs = 256;

// What `clockhost --scenario` was asked to run.
struct SuiteOptions {
  std::vector<std::filesystem::path> files{};  // files and folders; empty: no scenario runs
  int jobs = 1;                                // how many run at a time, 1-kMostJobs
  bool keepGoing = false;                      // a failure does not stop the others
  bool tap = false;
  std::filesystem::path junit{};  // empty: none
};

}  // namespace host
