#include "ntpclient/Client.h"

#include <cstdint>
#include <utility>

#include "ntpclient/PipeReport.h"

namespace host::ntp {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

Client::Client(Assignment assignment, Environment environment, const ParentWatch& watch,
               SetClock setClock)
    : m_assignment(std::move(assignment)),
      m_environment(std::move(environment)),
      m_watch(watch),
      m_setClock(std::move(setClock)),
      m_backoff(m_environment.firstRetry) {}

int Client::run() {
  for (long rounds = 0; rounds < kRounds; ++rounds) {
    const Next next = round();
    if (next == Next::endFailed) return 1;
    if (next == Next::end || !pause(kInterval)) return 0;
  }
  return 0;
}

Client::Next Client::round() {
  for (int tries = 1;; ++tries) {
    const Next next = oneTry();
    if (next != Next::tryAgain) return next;
    if (tries == kTries) return Next::nextRound;
    if (!pause(m_backoff.next())) return Next::end;
  }
}

Client::Next Client::oneTry() {
  traceStep("asking");
  const auto refused = [this](Verdict verdict) {
    complain(std::string("answer ignored: ") + textOf(verdict));
  };
  const Outcome outcome =
      ask(m_assignment.server.c_str(), m_assignment.family, m_environment.port.c_str(),
          m_environment.answerLimit, m_watch, refused);
  return follow(outcome);
}

Client::Next Client::follow(const Outcome& outcome) try {
  switch (outcome.kind) {
    case Outcome::Kind::parentGone:
      return Next::end;
    case Outcome::Kind::denied:
      return Next::endFailed;
    case Outcome::Kind::rateExceeded:
      m_backoff.slowDown();
      return Next::tryAgain;
    case Outcome::Kind::nothing:
      traceStep("no answer");
      return Next::tryAgain;
    case Outcome::Kind::time:
      break;
  }
  m_backoff.reset();
  const auto now = outcome.time + (Clock::now() - outcome.at);
  m_setClock(now);
  traceStep("clock set");
  return report(static_cast<std::uint32_t>(std::chrono::floor<std::chrono::seconds>(now).count()));
} catch (const ChannelClosed& error) {
  complain(error.what());
  return Next::endFailed;
} catch (const Error& error) {
  complain(error.what());
  return Next::tryAgain;
}

Client::Next Client::report(std::uint32_t seconds) {
  switch (reportTime(m_environment.pipe, seconds, m_environment.reportLimit, m_watch)) {
    case ReportResult::parentGone:
      return Next::end;
    case ReportResult::noListener:
      complain(std::string("no process reads ") + m_environment.pipe);
      break;
    case ReportResult::noPipe:
      complain(std::string(m_environment.pipe) + " is not a named pipe");
      break;
    case ReportResult::delivered:
      traceStep("reported");
      break;
  }
  return Next::nextRound;
}

bool Client::pause(std::chrono::milliseconds time) const {
  return m_watch.wait(Clock::now() + time) != ParentWatch::Event::parentGone;
}

void Client::traceStep(const char* what) const {
  if (m_assignment.verbose) m_lines.step(what);
}

void Client::complain(const std::string& what) {
  m_lines.complain(what, Clock::now());
}

}  // namespace host::ntp
