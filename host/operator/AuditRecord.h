#pragma once

#include <functional>
#include <initializer_list>
#include <string>

#include "services/SecurityLog.h"
#include "verbs/Json.h"

namespace host {

// The security record of an action that a client requests. The destructor writes the record, with
// the origin at construction (originHere). The record says "refused" unless done() or begun() was
// called. Thread: one.
class AuditRecord {
 public:
  AuditRecord(SecurityLog& log, SecurityLog::Event event, std::string text);
  ~AuditRecord();
  AuditRecord(const AuditRecord&) = delete;
  AuditRecord& operator=(const AuditRecord&) = delete;

  void done() { m_state = State::done; }

  // The action has begun. Without done(), the record ends with the text of `howFar`.
  void begun(std::function<std::string()> howFar);

 private:
  enum class State { refused, begun, done };

  SecurityLog& m_log;
  const SecurityLog::Event m_event;
  const std::string m_origin;
  std::string m_text;
  std::function<std::string()> m_howFar;
  State m_state = State::refused;
};

// The named members that are texts or integers, each after a space.
[[nodiscard]] std::string memberWords(const Json& request,
                                      std::initializer_list<const char*> members);

}  // namespace host
