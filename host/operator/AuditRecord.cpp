#include "operator/AuditRecord.h"

#include <exception>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/Origin.h"

namespace host {

AuditRecord::AuditRecord(SecurityLog& log, SecurityLog::Event event, std::string text)
    : m_log(log), m_event(event), m_origin(originHere()), m_text(std::move(text)) {}

void AuditRecord::begun(std::function<std::string()> howFar) {
  m_howFar = std::move(howFar);
  m_state = State::begun;
}

AuditRecord::~AuditRecord() {
  try {
    if (m_state == State::begun) m_text += m_howFar();
  } catch (const std::exception&) {
    // Out of memory: record the text without its end.
  }
  const OriginScope origin(m_origin);
  m_log.note(m_event, m_state == State::refused, m_text);
}

std::string memberWords(const Json& request, std::initializer_list<const char*> members) {
  std::string words;
  for (const char* const name : members) {
    const auto member = request.find(name);
    if (member == request.end()) continue;
    if (member->is_string()) words += ' ' + member->get_ref<const std::string&>();
    if (member->is_number_integer()) words += ' ' + member->dump();
  }
  return words;
}

}  // namespace host
