#include "powercut/PowerCuts.h"

#include <csignal>
#include <nlohmann/json.hpp>
#include <thread>

#include "remote/RemoteClient.h"
#include "support/FileContent.h"
#include "support/Interruption.h"

namespace powercut {
namespace {

using nlohmann::json;

constexpr std::chrono::seconds kAnswerLimit(20);
constexpr int kLongestStart = 15'000;  // microseconds; a host answers after about ten milliseconds
constexpr int kLongestLoad = 20'000;   // microseconds
constexpr int kCutsForEachInAStart = 5;

json answer(host::RemoteClient& client, const json& request) {
  const auto reply = client.control(request.dump(), kAnswerLimit);
  if (!reply) throw host::HostGone("no answer to " + request.dump());
  return json::parse(*reply);
}

std::string valueOf(host::RemoteClient& client, const std::string& key) {
  const json reply = answer(client, {{"verb", "get"}, {"key", key}});
  return reply.at("ok").get<bool>() ? reply.at("value").get<std::string>() : "(refused)";
}

}  // namespace

PowerCuts::PowerCuts(std::uint64_t seed) : m_host(CLOCKHOST, {"--log-level", "3"}), m_random(seed) {
  std::signal(SIGPIPE, SIG_IGN);  // the reader of a report ends with the host
}

bool PowerCuts::cut(std::uint64_t times) {
  while (m_figures.cuts < times && m_failure.empty()) {
    m_random() % kCutsForEachInAStart == 0 ? cutInStart() : cutUnderLoad();
    if (support::Interruption::signal() != 0) fail("stopped by a signal");
  }
  if (m_failure.empty() && start()) {
    checkPromises();
    checkSecurityLog();
    if (m_host.end(SIGTERM).status != 0) fail("the last host did not shut down in order");
  }
  m_figures.setsAcknowledged = m_promises.setsAcknowledged;
  m_figures.timesAcknowledged = m_promises.timesAcknowledged;
  checkFigures();
  return m_failure.empty();
}

void PowerCuts::cutInStart() {
  m_host.launch();
  wait(kLongestStart);
  ++m_figures.inStart;
  kill();
}

void PowerCuts::cutUnderLoad() {
  if (!start()) return;
  checkPromises();
  Load load(m_host, m_promises, m_random());
  wait(kLongestLoad);
  kill();
  load.end();
  if (!load.fault().empty()) fail("under load: " + load.fault());
}

void PowerCuts::kill() {
  ++m_figures.cuts;
  const integration::Outcome outcome = m_host.end(SIGKILL);
  if (outcome.status != 128 + SIGKILL) fail("the host ended before it was killed: " + outcome.err);
  if (!outcome.err.empty()) fail("the host logged: " + outcome.err);
  checkScript();
}

// A sleep, because the test needs a random moment and not an event.
void PowerCuts::wait(int mostMicroseconds) {
  std::uniform_int_distribution<int> moment(0, mostMicroseconds);
  std::this_thread::sleep_for(std::chrono::microseconds(moment(m_random)));
}

bool PowerCuts::start() {
  m_host.launch();
  if (m_host.answers()) return true;
  fail("no host starts: " + m_host.program().err());
  return false;
}

void PowerCuts::checkPromises() {
  const auto client = m_host.connectControl();
  for (const std::string& key : m_promises.sets.keys()) {
    const std::string value = valueOf(*client, key);
    if (!m_promises.sets.allows(key, value)) {
      fail(key + " is " + value + "; " + m_promises.sets.allowed(key));
    }
    if (m_promises.sets.found(key, value)) ++m_figures.cutOff;
  }
  // The clock is paused and has started at the saved time.
  const std::string time = valueOf(*client, "time");
  if (!m_promises.savedTimes.allows(kSavedTime, time)) {
    fail("the saved time is " + time + "; " + m_promises.savedTimes.allowed(kSavedTime));
  }
  m_promises.savedTimes.found(kSavedTime, time);
}

// Once the service has written its script, it always exists and is whole.
void PowerCuts::checkScript() {
  const bool exists = std::filesystem::exists(m_host.script());
  if (!exists && m_hasScript) fail("the script is lost");
  const std::string script = support::contentOf(m_host.script());
  if (exists && !integration::isWholeScript(script)) fail("torn script: \"" + script + '"');
  m_hasScript = exists;
  if (exists) ++m_figures.scripts;
}

// Each set is recorded before it is acknowledged, in its own record or counted in an earlier one.
void PowerCuts::checkSecurityLog() {
  const auto client = m_host.connectControl();
  std::uint64_t attempts = 0;
  json page = {{"after", 0}};
  while (page.contains("after")) {
    page = answer(*client, {{"verb", "security-log"}, {"after", page["after"]}});
    for (const json& record : page.at("records"))
      attempts += record.at("count").get<std::uint64_t>();
  }
  attempts += page.at("dropped").get<std::uint64_t>();
  if (attempts < m_promises.setsAcknowledged) {
    fail("the security log has less than " + std::to_string(m_promises.setsAcknowledged) +
         " attempts");
  }
}

// A run without acknowledged promises proves nothing.
void PowerCuts::checkFigures() {
  if (m_figures.setsAcknowledged == 0) fail("no set was acknowledged");
  if (m_figures.timesAcknowledged == 0) fail("no saved time was acknowledged");
  if (m_figures.scripts == 0) fail("no script was there to check");
}

void PowerCuts::fail(const std::string& text) {
  if (m_failure.empty()) m_failure = "cut " + std::to_string(m_figures.cuts) + ": " + text;
}

std::string toText(const Figures& figures) {
  return std::to_string(figures.cuts) + " cuts, " + std::to_string(figures.inStart) +
         " of them in a start; acknowledged " + std::to_string(figures.setsAcknowledged) +
         " sets and " + std::to_string(figures.timesAcknowledged) + " saved times, all kept; " +
         std::to_string(figures.cutOff) + " sets kept without an answer; " +
         std::to_string(figures.scripts) + " scripts whole";
}

}  // namespace powercut
