// Switches one fault of the platform on after the other, and runs the test that has to find it,
// each in a process of its own. Prints each fault, and fails if one was not found. Also fails if a
// list of tests to leave out may name a test that there is none of.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Promise.h"
#include "conformance/Violation.h"

namespace conformance {
namespace {

std::vector<const Violation*>& rows() {
  static std::vector<const Violation*> violations;
  return violations;
}

constexpr unsigned kLimit = 60;  // seconds for the tests of one process

bool g_listIsOld = false;

// Whether these tests have the expected result.
bool runTests(const std::string& filter, int expected, bool allFail) {
  GTEST_FLAG_SET(filter, filter);
  const int status = RUN_ALL_TESTS();
  const testing::UnitTest& result = *testing::UnitTest::GetInstance();
  return status == (allFail ? 1 : 0) && result.test_to_run_count() == expected &&
         result.failed_test_count() == (allFail ? expected : 0);
}

// What the function returns in a new process; false if that crashes or takes too long. Its output
// is dropped.
template <class Function>
bool inChild(const Function& function) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(kLimit);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    const bool good = function();
    std::fflush(nullptr);
    std::quick_exit(good ? EXIT_SUCCESS : EXIT_FAILURE);  // a fault may leave threads behind
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == EXIT_SUCCESS;
}

bool isFound(const Violation& violation) {
  return inChild([&] {
    violation.switchOn();
    return runTests(violation.test, 1, true);
  });
}

bool pass(const std::string& tests, int expected) {
  return inChild([&] { return runTests(tests, expected, false); });
}

bool oldListIsRefused() {
  return inChild([] {
    g_listIsOld = true;
    return runPromises() == 2;
  });
}

}  // namespace

Violation::Violation(const char* test, const char* what) : test(test), what(what) {
  rows().push_back(this);
}

const std::vector<const Violation*>& Violation::all() {
  return rows();
}

std::vector<LeftOut> leftOut() {
  if (!g_listIsOld) return {};
  return {{"RenamedPromise.*", "its name is old"}};
}

}  // namespace conformance

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const auto& violations = conformance::Violation::all();
  int missed = 0;
  std::string tests;
  for (const conformance::Violation* violation : violations) {
    const bool found = conformance::isFound(*violation);
    std::printf("%s %s: %s\n", found ? "found " : "MISSED", violation->test, violation->what);
    std::fflush(stdout);
    if (!found) ++missed;
    tests += std::string(violation->test) + ':';
  }
  const int rows = static_cast<int>(violations.size());
  const bool sound = conformance::pass(tests, rows);
  std::printf("%d of %d violations found; without one, the tests %s\n", rows - missed, rows,
              sound ? "pass" : "FAIL, or two violations name the same test");
  const bool refused = conformance::oldListIsRefused();
  if (!refused) std::printf("MISSED: a test to leave out that there is none of\n");
  return missed == 0 && sound && refused ? EXIT_SUCCESS : EXIT_FAILURE;
}
