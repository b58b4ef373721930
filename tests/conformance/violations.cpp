// Switches one fault of the platform on after the other, and runs the test that has to find it,
// each in a process of its own. Prints each fault, and fails if one was not found.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "conformance/Violation.h"

namespace conformance {
namespace {

std::vector<const Violation*>& rows() {
  static std::vector<const Violation*> violations;
  return violations;
}

constexpr unsigned kLimit = 60;  // seconds for the tests of one process

// Runs these tests. Does not return.
[[noreturn]] void runTests(const std::string& filter, int expected, bool allFail) {
  alarm(kLimit);
  GTEST_FLAG_SET(filter, filter);
  const int status = RUN_ALL_TESTS();
  const testing::UnitTest& result = *testing::UnitTest::GetInstance();
  const bool asExpected = status == (allFail ? 1 : 0) && result.test_to_run_count() == expected &&
                          result.failed_test_count() == (allFail ? expected : 0);
  std::fflush(nullptr);
  std::quick_exit(asExpected ? EXIT_SUCCESS : EXIT_FAILURE);  // a fault may leave threads behind
}

// Whether the tests in a new process have the expected result. Their output is dropped.
bool give(const std::string& filter, int expected, const Violation* violation) {
  const pid_t child = fork();
  if (child == 0) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    if (violation != nullptr) violation->switchOn();
    runTests(filter, expected, violation != nullptr);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == EXIT_SUCCESS;
}

}  // namespace

Violation::Violation(const char* test, const char* what) : test(test), what(what) {
  rows().push_back(this);
}

const std::vector<const Violation*>& Violation::all() {
  return rows();
}

}  // namespace conformance

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const auto& violations = conformance::Violation::all();
  int missed = 0;
  std::string tests;
  for (const conformance::Violation* violation : violations) {
    const bool found = conformance::give(violation->test, 1, violation);
    std::printf("%s %s: %s\n", found ? "found " : "MISSED", violation->test, violation->what);
    std::fflush(stdout);
    if (!found) ++missed;
    tests += std::string(violation->test) + ':';
  }
  const int rows = static_cast<int>(violations.size());
  const bool sound = conformance::give(tests, rows, nullptr);
  std::printf("%d of %d violations found; without one, the tests %s\n", rows - missed, rows,
              sound ? "pass" : "FAIL, or two violations name the same test");
  return missed == 0 && sound ? EXIT_SUCCESS : EXIT_FAILURE;
}
