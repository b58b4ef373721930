#pragma once

#include <cstddef>
#include <functional>

namespace bench {

// Seconds until `count` processes have done work(0) to work(count - 1), from when they exist. Each
// is a fork of this one. Throws std::system_error: a process could not be started;
// std::runtime_error: the work of one has thrown.
[[nodiscard]] double secondsTogether(std::size_t count,
                                     const std::function<void(std::size_t)>& work);

}  // namespace bench
