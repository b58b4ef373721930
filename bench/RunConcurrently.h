#pragma once

#include <cstddef>
#include <functional>

namespace bench {

// Forks this process `count` times, runs work(0) to work(count - 1) in them at the same time,
// and returns the seconds until the last one is done. Throws std::system_error when a process
// cannot be started, and std::runtime_error when the work throws in one of them.
[[nodiscard]] double runConcurrently(std::size_t count,
                                     const std::function<void(std::size_t)>& work);

}  // namespace bench
