#pragma once

#include <cstddef>

namespace bench {

// The last one that this process may use.
[[nodiscard]] std::size_t lastProcessor();

// From now on this process and those it starts share this one processor. Throws std::system_error.
void pinTo(std::size_t processor);

}  // namespace bench
