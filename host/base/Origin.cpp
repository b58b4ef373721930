#include "base/Origin.h"

#include <utility>

namespace host {
namespace {

thread_local const std::string* t_here = nullptr;
thread_local Cause t_cause;

}  // namespace

const std::string& originHere() {
  static const auto& device = *new std::string;
  return t_here == nullptr ? device : *t_here;
}

std::string userOf(const std::string& origin) {
  return origin.substr(0, origin.find(", pid "));
}

OriginScope::OriginScope(const std::string& origin) : m_before(std::exchange(t_here, &origin)) {}

OriginScope::~OriginScope() {
  t_here = m_before;
}

Cause causeHere() {
  return t_cause;
}

CauseScope::CauseScope(Cause cause) : m_before(std::exchange(t_cause, cause)) {}

CauseScope::~CauseScope() {
  t_cause = m_before;
}

}  // namespace host
