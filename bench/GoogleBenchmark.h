#pragma once

#include <benchmark/benchmark.h>

#include <functional>

namespace bench {

using Body = std::function<void(benchmark::State&)>;

// Nanoseconds of processor time that one iteration of the body takes, as Google Benchmark finds
// them; so that waiting for the processor is not counted.
[[nodiscard]] double processorNanoseconds(const Body& body);

}  // namespace bench
