#include "faults/PlanFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <new>
#include <system_error>

#include "base/Descriptor.h"

namespace faults {
namespace {

void* mapped(const std::filesystem::path& file) {
  const host::Descriptor descriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  void* memory = MAP_FAILED;
  if (descriptor.valid() && ::ftruncate(descriptor.get(), sizeof(Plan)) == 0) {
    memory = ::mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor.get(), 0);
  }
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), file);
  return memory;
}

}  // namespace

PlanFile::PlanFile(const std::filesystem::path& file) : m_plan(new (mapped(file)) Plan{}) {
  ::setenv(kPlanVariable, file.c_str(), 1);
}

PlanFile::~PlanFile() {
  ::unsetenv(kPlanVariable);
  ::munmap(m_plan, sizeof(Plan));
}

void PlanFile::arm(Call call, int error, std::uint64_t nth) {
  m_plan->error = static_cast<std::uint32_t>(error);
  m_plan->nth = nth;
  m_plan->seen = 0;
  m_plan->call = call;
}

bool PlanFile::disarm() {
  m_plan->call = Call::none;
  return failed();
}

}  // namespace faults
