#pragma once

#include <cstdint>
#include <filesystem>

#include "faults/FailingCalls.h"

namespace faults {

// Creates the file with the plan. Hosts that start while the object exists use it.
// Owner: a test, one at a time. Failure: std::system_error from the constructor.
class PlanFile {
 public:
  explicit PlanFile(const std::filesystem::path& file);
  ~PlanFile();
  PlanFile(const PlanFile&) = delete;
  PlanFile& operator=(const PlanFile&) = delete;

  // Counts calls of this kind from now on, and makes the n-th fail; 1 is the first.
  void arm(Call call, int error, std::uint64_t nth);

  [[nodiscard]] bool failed() const { return m_plan->seen >= m_plan->nth; }

  // Makes no further call fail. True when a call has failed.
  bool disarm();

 private:
  Plan* m_plan;
};

}  // namespace faults
