#include "faults/Life.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <utility>

#include "base/Descriptor.h"
#include "support/FileContent.h"

namespace faults {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit(10);
constexpr std::chrono::milliseconds kForAnEvent(20);
constexpr int kRefused = 1;  // the host's exit status when it cannot start

// Of the settings of a life, before any set.
constexpr std::pair<const char*, const char*> kFirstValues[] = {
    {"sntp-addr", ""},    {"sntp-tz-offset", "0"},         {"ntp-secret", ""},
    {"date-format", "0"}, {"daylight-save-minutes", "60"},
};

// One report as the NTP client makes it; none when nobody listens just now.
void report(const std::filesystem::path& pipe) {
  constexpr std::uint32_t kSecondsSinceEpoch = 1'800'000'000;
  const host::Descriptor writer(::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
  if (!writer.valid()) return;
  [[maybe_unused]] const ssize_t written =
      ::write(writer.get(), &kSecondsSinceEpoch, sizeof kSecondsSinceEpoch);
}

// The service has clients that it can start, and which end at once.
integration::Words options() {
  return {"--network", "up", "--program", "/sbin/ntpclient=/bin/true", "--log-level", "3"};
}

}  // namespace

Life::Life() : m_host(CLOCK_FAILING_HOST, options()) {
  for (const auto& [key, value] : kFirstValues) m_ledger.begins(key, value);
}

void Life::live(const PlanFile& plan) {
  for (const Run run : {Run::first, Run::second}) {
    live(run);
    endUnder(plan);
  }
}

void Life::endUnder(const PlanFile& plan) {
  const bool failedBefore = plan.failed();
  end();
  if (plan.failed() && !failedBefore) m_failedAtAnEnd = true;
}

void Life::live(Run run) {
  m_host.launch();
  if (m_host.answers()) {
    m_operator = std::make_unique<Caller>(m_host);
    m_subscriber = std::make_unique<Caller>(m_host);
    work(run);
    m_operator.reset();
    m_subscriber.reset();
  }
}

// What the first run has set, the second must find.
void Life::work(Run run) {
  set("sntp-addr", run == Run::first ? "127.0.0.1" : "localhost");
  set("sntp-tz-offset", run == Run::first ? "1" : "-3.5");
  lookAtScript();
  moveClock(R"("action":"next")");
  lookAtScript();
  hearAnEvent();
  hearOfAReport();
  if (run == Run::first) set("ntp-secret", "secret");
  if (run == Run::first) set("date-format", "1");
  set("daylight-save-minutes", run == Run::first ? "30" : "45");
  moveClock(R"("action":"advance","seconds":3600)");
}

void Life::set(const std::string& key, const std::string& value) {
  const auto number = m_ledger.asked(key, value);
  if (const auto accepted = m_operator->set(key, value)) m_ledger.answered(key, number, *accepted);
}

void Life::moveClock(const std::string& action) {
  static_cast<void>(m_operator->control(R"({"verb":"clock",)" + action + "}"));
}

// A subscriber that is lost comes again.
void Life::hearAnEvent() {
  const auto deadline = Clock::now() + kLimit;
  while (Clock::now() < deadline) {
    if (!m_subscriber->connected()) static_cast<void>(m_subscriber->call("observeTimeEvents"));
    moveClock(R"("action":"advance","seconds":3600)");
    if (m_subscriber->nextEvent(kForAnEvent)) return;
  }
  complain("no event of an hour reached the subscriber");
}

// A listener that could not be started hears nothing until the next start, and has said so.
bool Life::isDeaf() {
  return m_host.program().err().find("Thread couldn't be started") != std::string::npos;
}

// A report that is lost comes again.
void Life::hearOfAReport() {
  while (m_subscriber->nextEvent(std::chrono::milliseconds(0))) continue;
  const auto deadline = Clock::now() + kLimit;
  while (Clock::now() < deadline) {
    if (isDeaf()) return;
    if (!m_subscriber->connected()) static_cast<void>(m_subscriber->call("observeTimeEvents"));
    report(m_host.pipe());
    if (m_subscriber->nextEvent(kForAnEvent)) return;
  }
  complain("no event of a report reached the subscriber");
}

void Life::end() {
  const integration::Outcome outcome = m_host.end(SIGTERM, kLimit);
  m_log += outcome.err;
  const bool refused = outcome.status == kRefused && outcome.err.find("clockhost: ") == 0;
  if (outcome.status != 0 && !refused) {
    complain("the host ended with status " + std::to_string(outcome.status));
  }
  lookAtScript();
}

// Once there is one, there is always one, and it is whole.
void Life::lookAtScript() {
  const bool exists = std::filesystem::exists(m_host.script());
  if (!exists && m_hasScript) complain("the script is lost");
  const std::string script = support::contentOf(m_host.script());
  if (exists && !integration::isWholeScript(script)) complain("torn script: " + script);
  m_hasScript = exists;
}

// No failure of the system is damage.
void Life::lookForDamage() {
  for (const auto& file : std::filesystem::directory_iterator(m_host.state())) {
    const std::string name = file.path().filename();
    if (name.find("damaged") != std::string::npos) complain("set aside as " + name);
  }
}

void Life::lookBack() {
  m_host.launch();
  if (!m_host.answers()) return complain("no host starts afterwards");
  Caller caller(m_host);
  if (!caller.call("getTime")) complain("no answer afterwards");
  for (const std::string& key : m_ledger.keys()) {
    const std::string value = caller.get(key).value_or("(refused)");
    if (!m_ledger.allows(key, value)) complain(key + " is " + value + "; " + m_ledger.allowed(key));
  }
  m_host.end(SIGKILL);
  lookForDamage();
}

}  // namespace faults
