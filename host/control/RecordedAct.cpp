#include "control/RecordedAct.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace host {

RecordedAct::RecordedAct(SecurityLog& log, SecurityLog::Event event, std::string text)
    : m_log(log), m_event(event), m_text(std::move(text)) {}

RecordedAct::~RecordedAct() {
  m_log.note(m_event, !m_done, m_text);
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
