#pragma once

#include <chrono>
#include <string>

#include "ntpclient/Backoff.h"
#include "ntpclient/CommandLine.h"
#include "ntpclient/ErrorLines.h"
#include "ntpclient/Exchange.h"
#include "ntpclient/HostClock.h"
#include "ntpclient/PipeReport.h"

namespace host::ntp {

// What the client does not get from its command line.
struct Environment {
  std::string port = "123";
  const char* pipe = kReportPipe;  // outlives the client
  Backoff::Duration firstRetry = Backoff::kFirst;
  std::chrono::milliseconds answerLimit{2000};
  std::chrono::milliseconds reportLimit{5000};
};

// Asks a time server once an hour, sets the clock by each good answer, and reports that to the
// service. Writes each kind of failure to standard error once an hour; a silent server is not
// reported. Owner: main. Thread: one. Failure: tries again later; see run().
class Client {
 public:
  // watch outlives the client.
  Client(Assignment assignment, Environment environment, const ParentWatch& watch,
         SetClock setClock);

  // Returns the program's exit status: 0 after the last round or when the parent is gone, 1 when
  // the server denies service or the host has closed the channel to its clock.
  [[nodiscard]] int run();

 private:
  enum class Next { nextRound, tryAgain, end, endFailed };

  [[nodiscard]] Next round();
  [[nodiscard]] Next oneTry();
  [[nodiscard]] Next follow(const Outcome& outcome);
  [[nodiscard]] Next report(std::uint32_t seconds);
  [[nodiscard]] bool pause(std::chrono::milliseconds time) const;
  void traceStep(const char* what) const;
  void complain(const std::string& what);

  const Assignment m_assignment;
  const Environment m_environment;
  const ParentWatch& m_watch;
  const SetClock m_setClock;
  Backoff m_backoff;
  ErrorLines m_lines;
};

}  // namespace host::ntp
