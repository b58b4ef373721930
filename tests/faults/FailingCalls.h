#pragma once

#include <atomic>
#include <cstdint>

namespace faults {

// The system calls that can be made to fail, distinguished by the file that they use.
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

// Which call of a host fails. The test writes the plan into a file that test and host map into
// memory; the host counts its calls there. All zero: none fails.
struct Plan {
  std::atomic<Call> call;
  std::atomic<std::uint32_t> error;  // errno; for memory: kReserveThere or kReserveSpent
  std::atomic<std::uint64_t> nth;    // which call fails; 1 is the first after arming
  std::atomic<std::uint64_t> seen;   // calls so far
};
static_assert(std::atomic<Call>::is_always_lock_free &&
              std::atomic<std::uint64_t>::is_always_lock_free);

inline constexpr int kReserveThere = 0;  // freed memory can be allocated again
inline constexpr int kReserveSpent = 1;  // it cannot be

// The environment variable with the path of the plan.
inline constexpr const char* kPlanVariable = "CLOCK_FAILING_CALLS";

// Whether the plan is for this call.
[[nodiscard]] bool isPlanned(Call call) noexcept;

// Counts one call. True, with errno set, when this one must fail. Thread: any.
[[nodiscard]] bool fails(Call call) noexcept;

// The errno of the plan.
[[nodiscard]] int plannedError() noexcept;

}  // namespace faults
