#pragma once

#include <functional>
#include <initializer_list>
#include <string>

#include "services/SecurityLog.h"
#include "verbs/Json.h"

namespace host {

// What somebody lets the host do, for the security log: recorded when this goes, in the name of the
// origin that it began with (originHere), as refused unless it had an effect.
// Owner: whoever carries it out. Thread: one.
class RecordedAct {
 public:
  RecordedAct(SecurityLog& log, SecurityLog::Event event, std::string text);
  ~RecordedAct();
  RecordedAct(const RecordedAct&) = delete;
  RecordedAct& operator=(const RecordedAct&) = delete;

  void done() { m_state = State::done; }

  // It has had an effect. Unless it is done later, what `howFar` returns is put behind its text in
  // the end.
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

// Those of the members that are texts or whole numbers, a space before each.
[[nodiscard]] std::string memberWords(const Json& request,
                                      std::initializer_list<const char*> members);

}  // namespace host
