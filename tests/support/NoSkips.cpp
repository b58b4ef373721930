// Linked to every test program: where CI is set, a test that skips has failed.

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

// Ends of tests reach the listeners in the opposite order, so this one comes before the printer.
class NoSkips : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo& test) override {
    if (test.result()->Skipped()) ADD_FAILURE() << "the test was skipped, which CI does not allow";
  }
};

[[maybe_unused]] const bool kListens = [] {
  const char* const ci = std::getenv("CI");  // NOLINT(concurrency-mt-unsafe): before any thread
  if (ci != nullptr && *ci != '\0')
    testing::UnitTest::GetInstance()->listeners().Append(new NoSkips);  // who frees it
  return true;
}();

}  // namespace
