// The corpus in the tree matches the targets in the build: each target has a folder with inputs,
// each folder has a target, and each input has a name that describes it.

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

// A name that libFuzzer gives to an input: a digest, with or without a prefix.
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

TEST(FuzzCorpus, HasADescriptiveNameForEachInput) {
  for (const auto& entry : fs::recursive_directory_iterator(CLOCK_FUZZ_CORPUS))
    EXPECT_FALSE(isDigest(entry.path().filename().string())) << entry.path();
}

TEST(FuzzCorpus, IsSmall) {
  // Longer inputs use the short notation, which fuzz::expanded reads.
  constexpr std::uintmax_t kMost = 4096;
  for (const auto& entry : fs::recursive_directory_iterator(CLOCK_FUZZ_CORPUS)) {
    if (entry.is_directory()) continue;
    EXPECT_LE(entry.file_size(), kMost) << entry.path();
  }
}

}  // namespace
