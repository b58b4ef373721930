#include "powercut/SavedTimes.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace powercut {
namespace {

// Far more than passes by itself meanwhile, and still within the years that the clock knows.
constexpr std::int64_t kStep = 1000;

std::string utcString(std::int64_t instant) {
  const auto seconds = static_cast<std::time_t>(instant);
  std::tm utc{};
  ::gmtime_r(&seconds, &utc);
  std::array<char, 32> text;
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S+00:00", &utc)};
}

}  // namespace

std::string SavedTimes::next() {
  m_instant += kStep;
  m_possible.push_back(utcString(m_instant));
  return m_possible.back();
}

void SavedTimes::acknowledged(const std::string& time) {
  m_possible.erase(m_possible.begin(), std::find(m_possible.begin(), m_possible.end(), time));
}

bool SavedTimes::allows(const std::string& time) const {
  return std::find(m_possible.begin(), m_possible.end(), time) != m_possible.end();
}

std::string SavedTimes::allowed() const {
  return m_possible.front() + " to " + m_possible.back();
}

}  // namespace powercut
