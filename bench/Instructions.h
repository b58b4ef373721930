#pragma once

#include <cstddef>
#include <functional>

namespace bench {

// How many machine instructions the work executes in user mode: a forked child runs it twice, the
// second time step by step. Failure: std::runtime_error when the child ends or cannot be traced.
[[nodiscard]] std::size_t instructionsOf(const std::function<void()>& work);

}  // namespace bench
