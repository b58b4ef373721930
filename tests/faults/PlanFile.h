#pragma once

#include <cstdint>
#include <filesystem>

#include "faults/FailingCalls.h"

namespace faults {

// The file of the plan, for each host that is started during its lifetime.
// Owner: a test, one at a time. Failure: std::system_error from the constructor.
class PlanFile {
 public:
  explicit PlanFile(const std::filesystem::path& file);
  ~PlanFile();
  PlanFile(const PlanFile&) = delete;
  PlanFile& operator=(const PlanFile&) = delete;

  // Counts calls from now on; the n-th fails, where 1 is the first.
  void arm(Call call, int error, std::uint64_t nth);

  [[nodiscard]] bool failed() const { return m_plan->seen >= m_plan->nth; }

  // No call fails from now on. True when one has failed.
  bool disarm();

 private:
  Plan* m_plan;
};

}  // namespace faults
