#include "runtime/LineCutter.h"

#include "base/PrintableText.h"

namespace host {

void LineCutter::add(std::string_view bytes, const Take& take) {
  for (;;) {
    const std::size_t end = bytes.find('\n');
    append(bytes.substr(0, end), take);
    if (end == std::string_view::npos) return;
    finish(take);
    bytes.remove_prefix(end + 1);
  }
}

void LineCutter::append(std::string_view part, const Take& take) {
  if (m_cut) return;
  m_begun += part.substr(0, kLongestLine + 1);
  if (m_begun.size() <= kLongestLine) return;
  take(std::string(beginningOf(m_begun, kLongestLine)).append(kCut));
  m_begun.clear();
  m_cut = true;
}

void LineCutter::finish(const Take& take) {
  if (m_begun.ends_with('\r')) m_begun.pop_back();
  if (!m_begun.empty()) take(m_begun);
  m_begun.clear();
  m_cut = false;
}

}  // namespace host
