// libFuzzer's entry points, and the set-up for every property: a private working folder, and UTC
// instead of the machine's zone.

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <vector>

#include "fuzz/Property.h"
#include "support/WorkingFolder.h"

extern "C" int LLVMFuzzerInitialize(int* count, char*** words);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// libFuzzer's options whose value is a path.
constexpr std::string_view kPathOptions[] = {
    "-artifact_prefix=", "-dict=", "-exact_artifact_path="};

// Makes path arguments absolute, because the properties run in another folder.
std::string absoluteArgument(const std::string& word) {
  for (const std::string_view option : kPathOptions) {
    if (!word.starts_with(option)) continue;
    return std::string(option) + std::filesystem::absolute(word.substr(option.size())).string();
  }
  return word.starts_with('-') ? word : std::filesystem::absolute(word).string();
}

// By default, crash inputs are written to the folder where libFuzzer was started.
std::vector<std::string> absoluteArguments(int count, char** words) {
  std::vector<std::string> all{words[0], absoluteArgument("-artifact_prefix=./")};
  for (int i = 1; i < count; ++i) all.push_back(absoluteArgument(words[i]));
  return all;
}

}  // namespace

int LLVMFuzzerInitialize(int* count, char*** words) {
  static std::vector<std::string> texts;
  static std::vector<char*> pointers;
  if (count != nullptr) {
    texts = absoluteArguments(*count, *words);
    for (std::string& text : texts) pointers.push_back(text.data());
    *count = static_cast<int>(pointers.size());
    pointers.push_back(nullptr);
    *words = pointers.data();
  }
  static const support::WorkingFolder folder;
  setenv("TZ", "UTC0", 1);  // NOLINT(concurrency-mt-unsafe): before any thread
  tzset();
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::property({reinterpret_cast<const char*>(data), size});
  return 0;
}
