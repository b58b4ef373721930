#pragma once

#include <cstdint>
#include <filesystem>

#include "faults/FailingCalls.h"

namespace faults {

// The test's end of the plan: its file, named to each host that is started while it lives.
// Owner: a test, one at a time. Failure: std::system_error from the constructor.
class PlanFile {
 public:
  explicit PlanFile(const std::filesystem::path& file);
  ~PlanFile();
  PlanFile(const PlanFile&) = delete;
  PlanFile& operator=(const PlanFile&) = delete;

  // From now on calls are counted, and the n-th (1: the first) fails.
  void arm(Call call, int error, std::uint64_t nth);

  [[nodiscard]] bool failed() const { return m_plan->seen >= m_plan->nth; }

  // No call fails any more. True when one did.
  bool disarm();

 private:
  Plan* m_plan;
};

}  // namespace faults
