#include "platform/Origin.h"

#include <utility>

namespace host {
namespace {

thread_local const std::string* here = nullptr;

}  // namespace

const std::string& originHere() {
  static const auto& device = *new std::string;
  return here == nullptr ? device : *here;
}

OriginScope::OriginScope(const std::string& origin) : m_before(std::exchange(here, &origin)) {}

OriginScope::~OriginScope() {
  here = m_before;
}

}  // namespace host
