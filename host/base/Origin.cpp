#include "base/Origin.h"

#include <utility>

namespace host {
namespace {

thread_local const std::string* t_here = nullptr;
thread_local std::uint32_t t_call = 0;
thread_local Cause t_cause;
thread_local bool t_asks = false;

}  // namespace

std::string_view originHere() {
  return t_here == nullptr ? std::string_view() : *t_here;
}

std::string userOf(const std::string& origin) {
  return origin.substr(0, origin.find(", pid "));
}

std::uint32_t callHere() {
  return t_call;
}

OriginScope::OriginScope(const std::string& origin, std::uint32_t call)
    : m_before(std::exchange(t_here, &origin)), m_callBefore(std::exchange(t_call, call)) {}

OriginScope::~OriginScope() {
  t_here = m_before;
  t_call = m_callBefore;
}

Cause causeHere() {
  return t_cause;
}

CauseScope::CauseScope(Cause cause) : m_before(std::exchange(t_cause, cause)) {}

CauseScope::~CauseScope() {
  t_cause = m_before;
}

bool asksHere() {
  return t_asks;
}

QuestionScope::QuestionScope() : m_before(std::exchange(t_asks, true)) {}

QuestionScope::~QuestionScope() {
  t_asks = m_before;
}

}  // namespace host
