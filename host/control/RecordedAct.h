#pragma once

#include <initializer_list>
#include <string>

#include "control/Json.h"
#include "services/SecurityLog.h"

namespace host {

// What somebody lets the host do, for the security log: recorded when this goes, as refused unless
// it was done. Owner: whoever carries it out. Thread: one.
class RecordedAct {
 public:
  RecordedAct(SecurityLog& log, SecurityLog::Event event, std::string text);
  ~RecordedAct();
  RecordedAct(const RecordedAct&) = delete;
  RecordedAct& operator=(const RecordedAct&) = delete;

  void done() { m_done = true; }

 private:
  SecurityLog& m_log;
  const SecurityLog::Event m_event;
  const std::string m_text;
  bool m_done = false;
};

// Those of the members that are texts or whole numbers, a space before each.
[[nodiscard]] std::string memberWords(const Json& request,
                                      std::initializer_list<const char*> members);

}  // namespace host
