#include "Instructions.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>

namespace {

TEST(Instructions, AreCountedExactly) {
  const std::size_t one = bench::instructionsOf([] { asm volatile("nop"); });
  const std::size_t more = bench::instructionsOf([] { asm volatile(".rept 101\nnop\n.endr"); });
  EXPECT_EQ(more - one, 100U);
}

TEST(Instructions, AreNotCountedInTheFirstRun) {
  bool first = true;
  const auto work = [&first] {
    if (first) asm volatile(".rept 1000\nnop\n.endr");
    first = false;
  };
  EXPECT_LT(bench::instructionsOf(work), 1000U);
}

TEST(Instructions, CannotBeCountedWhenTheWorkEndsItsProcess) {
  EXPECT_THROW(static_cast<void>(bench::instructionsOf([] { _exit(0); })), std::runtime_error);
  EXPECT_THROW(static_cast<void>(bench::instructionsOf([] { throw std::runtime_error("wrong"); })),
               std::runtime_error);
}

}  // namespace
