#pragma once

#include <string>
#include <vector>

#include "faults/Caller.h"
#include "faults/PlanFile.h"
#include "integration/RestartableHost.h"
#include "integration/SetLedger.h"

namespace faults {

// A telephone's life in short: everything that it depends on is used, in two runs of the host, the
// first of them on a fresh store. Any call of the host may fail meanwhile.
// Owner: a test. Thread: the test's. Failure: what went wrong is a line of complaints().
class Life {
 public:
  Life();

  // Lives through both runs. What the hosts wrote to standard error is added to log().
  void live(const PlanFile& plan);

  // A host on what the life has left: everything acknowledged is there, and it answers.
  void lookBack();

  [[nodiscard]] integration::RestartableHost& host() { return m_host; }
  [[nodiscard]] const std::string& log() const { return m_log; }
  [[nodiscard]] bool failedAtAnEnd() const { return m_failedAtAnEnd; }
  [[nodiscard]] const std::vector<std::string>& complaints() const { return m_complaints; }

 private:
  enum class Run { first, second };

  void live(Run run);
  void endUnder(const PlanFile& plan);
  void work(Run run);
  void set(const std::string& key, const std::string& value);
  void moveClock(const std::string& action);
  void hearOfAReport();
  void hearAnEvent();
  [[nodiscard]] bool isDeaf();
  void end();
  void lookAtScript();
  void lookForDamage();
  void complain(const std::string& text) { m_complaints.push_back(text); }

  integration::RestartableHost m_host;
  integration::SetLedger m_ledger;
  std::string m_log;
  bool m_failedAtAnEnd = false;
  bool m_hasScript = false;
  std::vector<std::string> m_complaints;
  std::unique_ptr<Caller> m_operator;
  std::unique_ptr<Caller> m_subscriber;
};

}  // namespace faults
