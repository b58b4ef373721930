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
constexpr int kLongestStart = 15'000;  // microseconds; a host answers after about ten
constexpr int kLongestLoad = 20'000;
constexpr int kStartsForEachCutInOne = 5;

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
  std::signal(SIGPIPE, SIG_IGN);  // the reader of a report goes with the host
}

bool PowerCuts::cut(std::uint64_t times) {
  while (m_figures.cuts < times && m_complaint.empty()) {
    m_random() % kStartsForEachCutInOne == 0 ? cutInStart() : cutUnderLoad();
    if (support::Interruption::signal() != 0) complain("stopped by a signal");
  }
  if (m_complaint.empty() && start()) {
    lookAtPromises();
    lookAtSecurityLog();
    if (m_host.end(SIGTERM).status != 0) complain("the last host did not end in order");
  }
  m_figures.setsAcknowledged = m_promises.setsAcknowledged;
  m_figures.timesAcknowledged = m_promises.timesAcknowledged;
  lookAtFigures();
  return m_complaint.empty();
}

void PowerCuts::cutInStart() {
  m_host.launch();
  wait(kLongestStart);
  ++m_figures.inStart;
  pull();
}

void PowerCuts::cutUnderLoad() {
  if (!start()) return;
  lookAtPromises();
  Load load(m_host, m_promises, m_random());
  wait(kLongestLoad);
  pull();
  load.end();
  if (!load.fault().empty()) complain("under load: " + load.fault());
}

void PowerCuts::pull() {
  ++m_figures.cuts;
  const integration::Outcome outcome = m_host.end(SIGKILL);
  if (outcome.status != 128 + SIGKILL) complain("the host ended by itself: " + outcome.err);
  if (!outcome.err.empty()) complain("the host complained: " + outcome.err);
  lookAtScript();
}

// The moment is what matters here, and that it is not always the same.
void PowerCuts::wait(int mostMicroseconds) {
  std::uniform_int_distribution<int> moment(0, mostMicroseconds);
  std::this_thread::sleep_for(std::chrono::microseconds(moment(m_random)));
}

bool PowerCuts::start() {
  m_host.launch();
  if (m_host.answers()) return true;
  complain("no host starts: " + m_host.program().err());
  return false;
}

void PowerCuts::lookAtPromises() {
  const auto client = m_host.connectControl();
  for (const std::string& key : m_promises.sets.keys()) {
    const std::string value = valueOf(*client, key);
    if (!m_promises.sets.allows(key, value)) {
      complain(key + " is " + value + "; " + m_promises.sets.allowed(key));
    }
    if (m_promises.sets.found(key, value)) ++m_figures.cutOff;
  }
  // The clock is paused, and has started at the saved time.
  const std::string time = valueOf(*client, "time");
  if (!m_promises.times.allows(time)) {
    complain("the saved time is " + time + "; possible is " + m_promises.times.allowed());
  }
  m_promises.times.found(time);
}

// Once there is one, there is always one, and it is whole.
void PowerCuts::lookAtScript() {
  const bool exists = std::filesystem::exists(m_host.script());
  if (!exists && m_hasScript) complain("the script is lost");
  const std::string script = support::contentOf(m_host.script());
  if (exists && !integration::isWholeScript(script)) complain("torn script: \"" + script + '"');
  m_hasScript = exists;
  if (exists) ++m_figures.scripts;
}

// Each set was recorded before it was acknowledged, on its own or counted in an earlier record.
void PowerCuts::lookAtSecurityLog() {
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
    complain("the security log has less than " + std::to_string(m_promises.setsAcknowledged) +
             " attempts");
  }
}

// Promises that nobody was given are easily kept.
void PowerCuts::lookAtFigures() {
  if (m_figures.setsAcknowledged == 0) complain("no set was acknowledged");
  if (m_figures.timesAcknowledged == 0) complain("no saved time was acknowledged");
  if (m_figures.scripts == 0) complain("no script was there to look at");
}

void PowerCuts::complain(const std::string& text) {
  if (m_complaint.empty()) m_complaint = "cut " + std::to_string(m_figures.cuts) + ": " + text;
}

std::string toText(const Figures& figures) {
  return std::to_string(figures.cuts) + " cuts, " + std::to_string(figures.inStart) +
         " of them in a start; acknowledged " + std::to_string(figures.setsAcknowledged) +
         " sets and " + std::to_string(figures.timesAcknowledged) + " saved times, all kept; " +
         std::to_string(figures.cutOff) + " sets kept without an answer; " +
         std::to_string(figures.scripts) + " scripts whole";
}

}  // namespace powercut
