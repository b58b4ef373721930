// Switches one fault of the platform on after the other, and runs the test that has to find it,
// each in a process of its own. Prints each fault, and fails if one was not found. Also fails if a
// list of tests to leave out may name a test that there is none of.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "Promise.h"
#include "conformance/Violation.h"

namespace conformance {
namespace {

std::vector<const Violation*>& rows() {
  static std::vector<const Violation*> violations;
  return violations;
}

constexpr std::chrono::minutes kLimit{5};         // for a test
constexpr std::chrono::seconds kLimitToReach{2};  // for one that hangs
bool g_listIsOld = false;

// Whether these tests have the expected result.
bool runTests(const std::string& filter, int expected, bool allFail) {
  GTEST_FLAG_SET(filter, filter);
  const int status = RUN_ALL_TESTS();
  const testing::UnitTest& result = *testing::UnitTest::GetInstance();
  return status == (allFail ? 1 : 0) && result.test_to_run_count() == expected &&
         result.failed_test_count() == (allFail ? expected : 0);
}

enum class End { good, bad, aborted };

struct Child {
  End end = End::bad;  // also of one that has crashed
  std::string output;
};

// What the function returns in a new process.
template <class Function>
Child inChild(const Function& function) {
  std::FILE* const output = std::tmpfile();
  const pid_t child = fork();
  if (child == 0) {
    const rlimit none{};
    setrlimit(RLIMIT_CORE, &none);
    dup2(fileno(output), STDOUT_FILENO);
    const bool good = function();
    std::fflush(nullptr);
    std::quick_exit(good ? EXIT_SUCCESS : EXIT_FAILURE);  // a fault may leave threads behind
  }
  int status = 0;
  Child result;
  if (child > 0 && waitpid(child, &status, 0) == child) {
    if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS) result.end = End::good;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) result.end = End::aborted;
  }
  std::rewind(output);
  for (int byte = 0; (byte = std::fgetc(output)) != EOF;) result.output += static_cast<char>(byte);
  std::fclose(output);
  return result;
}

bool isFound(const Violation& violation) {
  const bool hangs = std::string(violation.says) == Violation::kHangs;
  const Child child = inChild([&] {
    setTimeLimit(hangs ? kLimitToReach : kLimit);
    violation.switchOn();
    return runTests(violation.test, 1, true);
  });
  const bool hasWords = std::strstr(violation.test, "Promise.") != nullptr;
  return child.end == (hangs ? End::aborted : End::good) &&
         (!hasWords || child.output.find(violation.says) != std::string::npos);
}

bool pass(const std::set<std::string>& tests) {
  std::string filter;
  for (const std::string& test : tests) filter += test + ':';
  const auto count = static_cast<int>(tests.size());
  return inChild([&] { return runTests(filter, count, false); }).end == End::good;
}

bool oldListIsRefused() {
  return inChild([] {
           g_listIsOld = true;
           return runPromises() == 2;
         }).end == End::good;
}

}  // namespace

Violation::Violation(const char* test, const char* what, const char* says)
    : test(test), what(what), says(says) {
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
  std::set<std::string> tests;
  for (const conformance::Violation* violation : violations) {
    const bool found = conformance::isFound(*violation);
    std::printf("%s %s: %s\n", found ? "found " : "MISSED", violation->test, violation->what);
    std::fflush(stdout);
    if (!found) ++missed;
    tests.insert(violation->test);
  }
  const int rows = static_cast<int>(violations.size());
  const bool sound = conformance::pass(tests);
  std::printf("%d of %d violations found; without one, the tests %s\n", rows - missed, rows,
              sound ? "pass" : "FAIL");
  const bool refused = conformance::oldListIsRefused();
  if (!refused) std::printf("MISSED: a test to leave out that there is none of\n");
  return missed == 0 && sound && refused ? EXIT_SUCCESS : EXIT_FAILURE;
}
