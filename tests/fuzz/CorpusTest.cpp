// The corpus in the tree is that of the targets in the build: no target without inputs, no inputs
// without a target, and each input has a name that says what it is.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

Names targets() {
  std::istringstream list(CLOCK_FUZZ_TARGETS);
  return {std::istream_iterator<std::string>(list), {}};
}

Names folders() {
  Names names;
  for (const auto& entry : fs::directory_iterator(CLOCK_FUZZ_CORPUS))
    names.insert(entry.path().filename().string());
  return names;
}

// What the fuzzer calls its finds.
bool isDigest(const std::string& name) {
  const std::string end = name.substr(name.find_last_of('-') + 1);
  return end.size() == 40 && std::all_of(end.begin(), end.end(), [](char c) {
           return std::isxdigit(static_cast<unsigned char>(c)) != 0;
         });
}

TEST(FuzzCorpus, HasAFolderForEachTargetAndNoOther) {
  EXPECT_EQ(folders(), targets());
}

TEST(FuzzCorpus, HasInputsForEachTarget) {
  for (const std::string& name : targets())
    EXPECT_FALSE(fs::is_empty(fs::path(CLOCK_FUZZ_CORPUS) / name)) << name;
}

TEST(FuzzCorpus, NamesEachInputForWhatItIs) {
  for (const auto& entry : fs::recursive_directory_iterator(CLOCK_FUZZ_CORPUS))
    EXPECT_FALSE(isDigest(entry.path().filename().string())) << entry.path();
}

TEST(FuzzCorpus, IsSmall) {
  constexpr std::uintmax_t kMost = 4096;  // a longer input is written as one that grows
  for (const auto& entry : fs::recursive_directory_iterator(CLOCK_FUZZ_CORPUS)) {
    if (entry.is_directory()) continue;
    EXPECT_LE(entry.file_size(), kMost) << entry.path();
  }
}

}  // namespace
