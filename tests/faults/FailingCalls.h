#pragma once

#include <atomic>
#include <cstdint>

namespace faults {

// The calls of the system that can be made to fail, told apart by the file they are made on.
enum class Call : std::uint32_t {
  none,
  storeOpen,
  storeRead,
  storeWrite,
  storeSync,
  scriptOpen,
  scriptWrite,
  scriptSync,
  scriptRename,
  spawn,
  threadCreation,
  pipeOpen,
  pipeRead,
  accept,
  send,
  memory
};

// What is to fail in a host, in a file that the host and its test both map: the test writes the
// plan, the host's calls count themselves and look whether it is their turn. All zero: none.
struct Plan {
  std::atomic<Call> call;
  std::atomic<std::uint32_t> error;  // errno of the failure; of memory: kReserveThere, ...Spent
  std::atomic<std::uint64_t> nth;    // which one fails; 1 is the first since the plan was made
  std::atomic<std::uint64_t> seen;   // how many there were
};
static_assert(std::atomic<Call>::is_always_lock_free &&
              std::atomic<std::uint64_t>::is_always_lock_free);

inline constexpr int kReserveThere = 0;  // memory that is given back can be had again
inline constexpr int kReserveSpent = 1;  // it cannot

// Names the file of the plan to the host.
inline constexpr const char* kPlanVariable = "CLOCK_FAILING_CALLS";

// Whether this call is the one with a plan.
[[nodiscard]] bool isPlanned(Call call) noexcept;

// Counts one call. True, with errno set, when it is the one to fail. Thread: any.
[[nodiscard]] bool fails(Call call) noexcept;

// That errno.
[[nodiscard]] int plannedError() noexcept;

}  // namespace faults
