#include "faults/Workload.h"

#include <csignal>
#include <utility>

#include "support/FileContent.h"

namespace faults {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit(10);
constexpr std::chrono::milliseconds kForAnEvent(20);
constexpr int kRefused = 1;  // the host's exit status when it cannot start

// The settings and their values before any set.
constexpr std::pair<const char*, const char*> kFirstValues[] = {
    {"sntp-addr", ""},    {"sntp-tz-offset", "0"},         {"ntp-secret", ""},
    {"date-format", "0"}, {"daylight-save-minutes", "60"},
};

// The NTP client can be started, and ends at once.
integration::Words options() {
  return {"--network", "up", "--program", "/sbin/ntpclient=/bin/true", "--log-level", "3"};
}

}  // namespace

Workload::Workload() : m_host(CLOCK_FAILING_HOST, options()) {
  for (const auto& [key, value] : kFirstValues) m_ledger.begins(key, value);
}

void Workload::run(const PlanFile& plan) {
  for (const Run run : {Run::first, Run::second}) {
    runHost(run);
    endWith(plan);
  }
}

void Workload::endWith(const PlanFile& plan) {
  const bool failedBefore = plan.failed();
  end();
  if (plan.failed() && !failedBefore) m_failedAtShutdown = true;
}

void Workload::runHost(Run run) {
  m_host.launch();
  if (m_host.answers()) {
    m_operator = std::make_unique<Caller>(m_host);
    m_subscriber = std::make_unique<Caller>(m_host);
    work(run);
    m_operator.reset();
    m_subscriber.reset();
  }
}

// The second run must find what the first has set. The host checks its security log after its first
// replies: it has done so when it lists the log, and all further calls on stores come later.
void Workload::work(Run run) {
  static_cast<void>(m_operator->control(R"({"verb":"security-log"})"));
  set("sntp-addr", run == Run::first ? "127.0.0.1" : "localhost");
  set("sntp-tz-offset", run == Run::first ? "1" : "-3.5");
  checkScript();
  moveClock(R"("action":"next")");
  checkScript();
  awaitEvent();
  awaitReport();
  if (run == Run::first) set("ntp-secret", "secret");
  if (run == Run::first) set("date-format", "1");
  set("daylight-save-minutes", run == Run::first ? "30" : "45");
  moveClock(R"("action":"advance","seconds":3600)");
}

void Workload::set(const std::string& key, const std::string& value) {
  const auto number = m_ledger.asked(key, value);
  if (const auto accepted = m_operator->set(key, value)) m_ledger.answered(key, number, *accepted);
}

void Workload::moveClock(const std::string& action) {
  static_cast<void>(m_operator->control(R"({"verb":"clock",)" + action + "}"));
}

// Connects again and repeats when the subscriber is dropped.
void Workload::awaitEvent() {
  const auto deadline = Clock::now() + kLimit;
  while (Clock::now() < deadline) {
    if (hostHasEnded()) return;
    if (!m_subscriber->connected()) static_cast<void>(m_subscriber->call("observeTimeEvents"));
    moveClock(R"("action":"advance","seconds":3600)");
    if (m_subscriber->nextEvent(kForAnEvent)) return;
  }
  complain("no event of an hour reached the subscriber");
}

// A listener that could not be started has logged that, and reads nothing until the next start.
bool Workload::hasNoListener() {
  return m_host.program().err().find("Thread couldn't be started") != std::string::npos;
}

// A host that cannot check its security log ends after its first replies.
bool Workload::hostHasEnded() {
  return m_host.program().ends(std::chrono::milliseconds(0));
}

// Repeats a report that is lost.
void Workload::awaitReport() {
  while (m_subscriber->nextEvent(std::chrono::milliseconds(0))) continue;
  const auto deadline = Clock::now() + kLimit;
  while (Clock::now() < deadline) {
    if (hostHasEnded() || hasNoListener()) return;
    if (!m_subscriber->connected()) static_cast<void>(m_subscriber->call("observeTimeEvents"));
    static_cast<void>(m_host.report(1'800'000'000));
    if (m_subscriber->nextEvent(kForAnEvent)) return;
  }
  complain("no event of a report reached the subscriber");
}

void Workload::end() {
  const integration::Outcome outcome = m_host.end(SIGTERM, kLimit);
  m_log += outcome.err;
  const bool hasReason = ('\n' + outcome.err).find("\nclockhost: ") != std::string::npos;
  const bool refused = outcome.status == kRefused && hasReason;
  if (outcome.status != 0 && !refused) {
    complain("the host ended with status " + std::to_string(outcome.status));
  }
  checkScript();
}

// Once written, the script exists and is complete at any time.
void Workload::checkScript() {
  const bool exists = std::filesystem::exists(m_host.script());
  if (!exists && m_hasScript) complain("the script is lost");
  const std::string script = support::contentOf(m_host.script());
  if (exists && !integration::isWholeScript(script)) complain("torn script: " + script);
  m_hasScript = exists;
}

// A failed system call must not be taken for a damaged store.
void Workload::checkForDamage() {
  for (const auto& file : std::filesystem::directory_iterator(m_host.state())) {
    const std::string name = file.path().filename();
    if (name.find("damaged") != std::string::npos) complain("set aside as " + name);
  }
}

void Workload::checkState() {
  m_host.launch();
  if (!m_host.answers()) return complain("no host starts afterwards");
  Caller caller(m_host);
  if (!caller.call("getTime")) complain("no answer afterwards");
  for (const std::string& key : m_ledger.keys()) {
    const std::string value = caller.get(key).value_or("(refused)");
    if (!m_ledger.allows(key, value)) complain(key + " is " + value + "; " + m_ledger.allowed(key));
  }
  m_host.end(SIGKILL);
  checkForDamage();
}

}  // namespace faults
