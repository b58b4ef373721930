#pragma once

#include <chrono>
#include <string>

#include "ntpclient/Backoff.h"
#include "ntpclient/ClockSetter.h"
#include "ntpclient/CommandLine.h"
#include "ntpclient/ErrorLines.h"
#include "ntpclient/Exchange.h"
#include "ntpclient/PipeReport.h"

namespace host::ntp {

// What the client needs besides its assignment.
struct Environment {
  std::string port = "123";
  const char* pipe = kReportPipe;  // outlives the client
  Backoff::Duration firstRetry = Backoff::kFirst;
  std::chrono::milliseconds answerLimit{2000};
  std::chrono::milliseconds reportLimit{5000};
};

// Asks a time server round after round, sets the clock by each good answer, and reports it to the
// service. Tells what went wrong on standard error, once an hour each; a silent server is not worth
// a line. Owner: main. Thread: one. Failure: the next try is later; see run().
class Client {
 public:
  // watch and clock outlive the client.
  Client(Assignment assignment, Environment environment, const ParentWatch& watch,
         ClockSetter& clock);

  // Returns the program's exit status: 0 when all rounds are done or the parent is gone, 1 when the
  // server denies its service or there is no host whose clock could be set.
  [[nodiscard]] int run();

 private:
  enum class Next { nextRound, tryAgain, end, endFailed };

  [[nodiscard]] Next round();
  [[nodiscard]] Next oneTry();
  [[nodiscard]] Next follow(const Outcome& outcome);
  [[nodiscard]] Next report(std::uint32_t seconds);
  [[nodiscard]] bool pause(std::chrono::milliseconds time) const;
  void tellSteps(const char* what) const;
  void complain(const std::string& what);

  const Assignment m_assignment;
  const Environment m_environment;
  const ParentWatch& m_watch;
  ClockSetter& m_clock;
  Backoff m_backoff;
  ErrorLines m_lines;
};

}  // namespace host::ntp
