#include "Promise.h"

#include <stdlib.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <system_error>

namespace conformance {

Promise::~Promise() = default;

void Promise::promises(const char* words, const char* source) {
  m_header = std::filesystem::path(source).stem().string() + ".h";
  m_words = words;
}

Platform& Promise::platform() {
  if (!m_platform) m_platform = makePlatform();
  return *m_platform;
}

void Promise::TearDown() {
  m_platform.reset();
  if (HasFailure() && !m_words.empty())
    std::printf("Not kept: %s: \"%s\"\n", m_header.c_str(), m_words.c_str());
}

ScratchFolder::ScratchFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "conformance-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  m_path = name;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

namespace {

// Whether GoogleTest's pattern, with '*' for any text, matches the name.
bool matches(const char* pattern, const char* name) {
  if (*pattern == '\0') return *name == '\0';
  if (*pattern == '*')
    return matches(pattern + 1, name) || (*name != '\0' && matches(pattern, name + 1));
  return *pattern == *name && matches(pattern + 1, name + 1);
}

int testsOf(const std::string& pattern) {
  int tests = 0;
  const testing::UnitTest& all = *testing::UnitTest::GetInstance();
  for (int i = 0; i < all.total_test_suite_count(); ++i) {
    const testing::TestSuite& suite = *all.GetTestSuite(i);
    for (int k = 0; k < suite.total_test_count(); ++k) {
      const std::string name = std::string(suite.name()) + '.' + suite.GetTestInfo(k)->name();
      if (matches(pattern.c_str(), name.c_str())) ++tests;
    }
  }
  return tests;
}

}  // namespace

int runPromises() {
  std::string filter = GTEST_FLAG_GET(filter);
  std::string summary;
  for (const LeftOut& row : leftOut()) {
    const int tests = testsOf(row.tests);
    if (tests == 0) {
      std::fprintf(stderr, "no test matches \"%s\", which is to be left out\n", row.tests.c_str());
      return 2;
    }
    filter += (filter.find('-') == std::string::npos ? "-" : ":") + row.tests;
    summary += "left out: " + row.tests + " (" + std::to_string(tests) + "): " + row.reason + '\n';
  }
  GTEST_FLAG_SET(filter, filter);
  const int status = RUN_ALL_TESTS();
  if (!GTEST_FLAG_GET(list_tests)) std::printf("%s", summary.c_str());
  return status;
}

}  // namespace conformance
