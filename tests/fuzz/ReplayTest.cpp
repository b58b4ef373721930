// Replays a fuzz target's corpus: the property holds for every input in the tree. Needs no fuzzer
// and runs in every build. Compiled once for all targets.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/Property.h"

extern "C" int LLVMFuzzerInitialize(int* count, char*** words);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {
namespace {

namespace fs = std::filesystem;

class Replay : public testing::Test {
 protected:
  static void SetUpTestSuite() { LLVMFuzzerInitialize(nullptr, nullptr); }

  static void run(const std::vector<std::uint8_t>& input) {
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
};

// The program fuzz_utc_text_test replays the folder utc-text.
fs::path corpusFolder() {
  const std::string program = fs::read_symlink("/proc/self/exe").filename();
  const std::size_t begin = program.find('_') + 1;
  std::string target = program.substr(begin, program.rfind('_') - begin);
  std::replace(target.begin(), target.end(), '_', '-');
  return fs::path(CLOCK_FUZZ_CORPUS) / target;
}

std::vector<fs::path> corpus() {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(corpusFolder())) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::uint8_t> contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(Replay, HoldsForEachInputOfTheCorpus) {
  for (const fs::path& file : corpus()) {
    SCOPED_TRACE(file.filename());
    EXPECT_NO_THROW(run(contentOf(file)));
  }
}

TEST_F(Replay, HoldsForEachTruncatedInput) {
  for (const fs::path& file : corpus()) {
    SCOPED_TRACE(file.filename());
    std::vector<std::uint8_t> input = contentOf(file);
    for (const std::size_t size : {std::size_t{0}, input.size() / 2, input.size() - 1}) {
      if (size >= input.size()) continue;
      EXPECT_NO_THROW(run({input.begin(), input.begin() + static_cast<std::ptrdiff_t>(size)}));
    }
  }
}

}  // namespace
}  // namespace fuzz
