#include "remote/OneLinePerPause.h"

#include "Logging.h"
#include "base/LogLevels.h"

namespace host {

void OneLinePerPause::log(const char* why, Clock::time_point now) noexcept {
  if (now < m_next) {
    ++m_suppressed;
    return;
  }
  if (m_suppressed == 0) {
    logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "%s: %s", m_kind, why);
  } else {
    logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "%s: %s; %llu more since the last line",
              m_kind, why, static_cast<unsigned long long>(m_suppressed));
  }
  m_suppressed = 0;
  m_next = now + kPause;
}

}  // namespace host
