#pragma once

#include <string>
#include <vector>

#include "faults/Caller.h"
#include "faults/PlanFile.h"
#include "integration/RestartableHost.h"
#include "integration/SetLedger.h"

namespace faults {

// Uses all that a telephone depends on, in two runs of the host, the first on a fresh store. Any
// call of the host may fail meanwhile. Owner: a test. Thread: the test's. Failure: a line of
// complaints().
class Workload {
 public:
  Workload();

  // Both runs. Appends the standard error of the hosts to log().
  void run(const PlanFile& plan);

  // Starts a host afterwards: it must answer and have everything that was acknowledged.
  void checkState();

  [[nodiscard]] integration::RestartableHost& host() { return m_host; }
  [[nodiscard]] const std::string& log() const { return m_log; }
  [[nodiscard]] bool failedAtShutdown() const { return m_failedAtShutdown; }
  [[nodiscard]] const std::vector<std::string>& complaints() const { return m_complaints; }

 private:
  enum class Run { first, second };

  void runHost(Run run);
  void endWith(const PlanFile& plan);
  void work(Run run);
  void set(const std::string& key, const std::string& value);
  void moveClock(const std::string& action);
  void awaitReport();
  void awaitEvent();
  [[nodiscard]] bool hasNoListener();
  [[nodiscard]] bool hostHasEnded();
  void end();
  void checkScript();
  void checkForDamage();
  void complain(const std::string& text) { m_complaints.push_back(text); }

  integration::RestartableHost m_host;
  integration::SetLedger m_ledger;
  std::string m_log;
  bool m_failedAtShutdown = false;
  bool m_hasScript = false;
  std::vector<std::string> m_complaints;
  std::unique_ptr<Caller> m_operator;
  std::unique_ptr<Caller> m_subscriber;
};

}  // namespace faults
