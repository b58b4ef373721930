// Linked to every test program: a skipped test fails where CI is set.

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

// Listeners get the end of a test in reverse order, so this one runs before the printer.
class NoSkips : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo& test) override {
    if (test.result()->Skipped()) ADD_FAILURE() << "the test was skipped, which CI does not allow";
  }
};

[[maybe_unused]] const bool kListens = [] {
  const char* const ci = std::getenv("CI");  // NOLINT(concurrency-mt-unsafe): before any thread
  if (ci != nullptr && *ci != '\0')
    testing::UnitTest::GetInstance()->listeners().Append(new NoSkips);  // takes ownership
  return true;
}();

}  // namespace
