#include "base/WaitMemory.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include "support/NoMemory.h"

namespace host {
namespace {

// The wait cannot start because the loop's list of timers needs memory to grow.
TEST(WaitMemory, IsFreeAgainAfterAWaitThatCannotStart) {
  asio::io_context loop;
  asio::steady_timer timer(loop, std::chrono::hours(1));
  const auto memory = std::make_shared<WaitMemory>();
  const support::NoMemory none;
  EXPECT_THROW(timer.async_wait(WaitHandler{memory, [](const auto&) {}}), std::bad_alloc);
  EXPECT_NO_THROW(memory->giveBack(memory->take(1)));
}

}  // namespace
}  // namespace host
