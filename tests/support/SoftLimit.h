#pragma once

#include <sys/resource.h>

namespace support {

// Changes a soft limit of the process for as long as the object exists.
class SoftLimit {
 public:
  SoftLimit(int resource, rlim_t most) : m_resource(resource) {
    ::getrlimit(which(), &m_before);
    const rlimit limit{most, m_before.rlim_max};
    ::setrlimit(which(), &limit);
  }
  ~SoftLimit() { ::setrlimit(which(), &m_before); }
  SoftLimit(const SoftLimit&) = delete;
  SoftLimit& operator=(const SoftLimit&) = delete;

 private:
  [[nodiscard]] __rlimit_resource which() const {
    return static_cast<__rlimit_resource>(m_resource);
  }

  const int m_resource;
  rlimit m_before{};
};

}  // namespace support
