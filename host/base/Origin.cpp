#include "base/Origin.h"

#include <utility>

namespace host {
namespace {

thread_local const std::string* here = nullptr;

}  // namespace

const std::string& originHere() {
  static const auto& device = *new std::string;
  return here == nullptr ? device : *here;
}

std::string userOf(const std::string& origin) {
  return origin.substr(0, origin.find(", pid "));
}

OriginScope::OriginScope(const std::string& origin) : m_before(std::exchange(here, &origin)) {}

OriginScope::~OriginScope() {
  here = m_before;
}

}  // namespace host
