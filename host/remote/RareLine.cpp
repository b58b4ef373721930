#include "remote/RareLine.h"

#include <string>

#include "Logging.h"

namespace host {

void RareLine::log(const char* why) {
  const auto now = std::chrono::steady_clock::now();
  if (now < m_next) {
    ++m_untold;
    return;
  }
  const std::string more =
      m_untold == 0 ? "" : "; so were " + std::to_string(m_untold) + " since the last line";
  logAppUni("clockhost", 3, __FILE__, __LINE__, "%s: %s%s", m_kind, why, more.c_str());
  m_untold = 0;
  m_next = now + kBetweenLines;
}

}  // namespace host
