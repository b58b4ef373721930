#include "Promise.h"

#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>

namespace conformance {
namespace {

unsigned g_limit = 300;  // seconds
std::array<char, 1000> g_hung;

// No framework can be unwound here, so the program ends.
void endHungTest(int /*signal*/) {
  [[maybe_unused]] const auto written =
      write(STDOUT_FILENO, g_hung.data(), std::strlen(g_hung.data()));
  std::abort();
}

// The line says what does not hold when the test hangs.
void startLimit(const std::string& line) {
  alarm(0);
  std::snprintf(g_hung.data(), g_hung.size(), "%s\nThe test did not end within %u s.\n",
                line.c_str(), g_limit);
  static_cast<void>(std::signal(SIGALRM, endHungTest));
  alarm(g_limit);
}

const testing::TestInfo& runningTest() {
  return *testing::UnitTest::GetInstance()->current_test_info();
}

bool adapterLacksAnOperation() {
  const testing::TestResult& result = *runningTest().result();
  for (int i = 0; i < result.total_part_count(); ++i) {
    if (std::strstr(result.GetTestPartResult(i).message(), kLack) != nullptr) return true;
  }
  return false;
}

}  // namespace

void setTimeLimit(std::chrono::seconds limit) {
  g_limit = static_cast<unsigned>(limit.count());
}

Promise::Promise() {
  startLimit(std::string("Hung: ") + runningTest().test_suite_name() + '.' + runningTest().name());
  m_platform = makePlatform();
}

Promise::~Promise() {
  m_platform.reset();
  alarm(0);
}

void Promise::promises(const char* words, const char* source) {
  m_promise = std::filesystem::path(source).stem().string() + ".h: \"" + words + '"';
  startLimit("Not kept: " + m_promise);
}

void Promise::TearDown() {
  m_platform.reset();
  if (!HasFailure() || m_promise.empty()) return;
  std::printf("%s: %s\n", adapterLacksAnOperation() ? "Not checked" : "Not kept",
              m_promise.c_str());
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
  int all = 0;
  for (const LeftOut& row : leftOut()) {
    const int tests = testsOf(row.tests);
    if (tests == 0) {
      std::fprintf(stderr, "no test matches \"%s\", which is to be left out\n", row.tests.c_str());
      return 2;
    }
    all += tests;
    filter += (filter.find('-') == std::string::npos ? "-" : ":") + row.tests;
    summary += "left out: " + row.tests + " (" + std::to_string(tests) + "): " + row.reason + '\n';
  }
  GTEST_FLAG_SET(filter, filter);
  const int status = RUN_ALL_TESTS();
  if (GTEST_FLAG_GET(list_tests)) return status;
  std::printf("%s", summary.c_str());
  if (all > 0) std::printf("left out: %d of %d tests\n", all, testsOf("*"));
  return status;
}

}  // namespace conformance
