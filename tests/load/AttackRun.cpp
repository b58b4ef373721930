#include "load/AttackRun.h"

#include <algorithm>
#include <csignal>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "integration/RestartableHost.h"
#include "load/Attackers.h"
#include "load/Latencies.h"
#include "remote/RemoteClient.h"
#include "support/Interruption.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kBystanderLimit(20);
constexpr std::chrono::seconds kEndLimit(2);
constexpr int kMoreSeconds = 20;  // on a slow machine, until each attack has had its effect
constexpr int kRecords = 5'000;   // of accepted sets that the security log keeps

Latencies callFor(std::chrono::milliseconds duration, host::RemoteClient& bystander) {
  Latencies latencies;
  const auto end = Clock::now() + duration;
  while (Clock::now() < end && support::Interruption::signal() == 0) {
    Method call("getTime", Method::call);
    const auto begin = Clock::now();
    if (!bystander.call(call, kBystanderLimit))
      throw std::runtime_error("the bystander is not answered");
    latencies.add(Clock::now() - begin);
  }
  return latencies;
}

std::string ask(host::RemoteClient& control, const std::string& json) {
  const auto reply = control.control(json, kBystanderLimit);
  if (!reply) throw std::runtime_error("not answered: " + json);
  return *reply;
}

nlohmann::json askJson(host::RemoteClient& control, const std::string& json) {
  return nlohmann::json::parse(ask(control, json));
}

// As many records of sets as are kept: the list of them is as long as it can be.
void fillSecurityLog(host::RemoteClient& control) {
  constexpr int kAtOnce = 500;
  for (int record = 0; record < kRecords; record += kAtOnce) {
    std::vector<std::uint32_t> ids;
    for (int i = 0; i < kAtOnce; ++i) {
      const char* const value = i % 2 == 0 ? "0" : "1";  // repeats would be counted in one record
      ids.push_back(control.startControl(R"({"verb":"set","key":"date-format","value":")" +
                                         std::string(value) + R"("})"));
    }
    for (const std::uint32_t id : ids) {
      if (!control.nextAnswer(id, kBystanderLimit)) throw std::runtime_error("a set is not done");
    }
  }
}

// Whether the list of records has the text, page by page.
bool isRecorded(host::RemoteClient& control, const std::string& text) {
  std::string request = R"({"verb":"security-log"})";
  for (;;) {
    const std::string page = ask(control, request);
    if (page.find(text) != std::string::npos) return true;
    const auto after = nlohmann::json::parse(page).value("after", std::int64_t{0});
    if (after == 0) return false;
    request = R"({"verb":"security-log","after":)" + std::to_string(after) + "}";
  }
}

std::string uptime(host::RemoteClient& control) {
  return askJson(control, R"({"verb":"clock","action":"show"})").at("uptime").get<std::string>();
}

// What the host itself tells of the attacks.
void addEffectsOnHost(integration::RestartableHost& host, host::RemoteClient& control,
                      const std::string& uptimeBefore, Effects& effects) {
  const auto add = [&](const char* name, bool met) { effects.push_back({name, met ? 1U : 0U}); };
  add("the clock was advanced", uptime(control) != uptimeBefore);
  add("the date format was set",
      askJson(control, R"({"verb":"get","key":"date-format"})").at("value") == "2");
  add("the time was set", isRecorded(control, "Remote call setTime(5, 5, 5)"));
  add("the security log is full",
      askJson(control, R"({"verb":"security-log"})").at("kept").get<int>() >= kRecords);
  add("the resolver was asked", host.program().says(std::string("silent about ") + kSilentName));
}

std::int64_t millisecondsToEnd(integration::RestartableHost& host) {
  const auto begin = Clock::now();
  host.program().signal(SIGTERM);
  if (!host.program().ends(kEndLimit)) return -1;
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

bool lacksAnEffect(const Effects& effects) {
  return std::any_of(effects.begin(), effects.end(),
                     [](const Effect& effect) { return effect.count == 0; });
}

}  // namespace

AttackFigures attackAHost(std::chrono::milliseconds duration) {
  integration::RestartableHost host(CLOCK_SILENT_HOST, {"--log-level", "2", "--network", "up"});
  host.launch();
  if (!host.answers()) throw std::runtime_error("no host: " + host.program().err());
  const auto control = host.connectControl();
  fillSecurityLog(*control);
  const std::string uptimeBefore = uptime(*control);
  const auto bystander = host.connect();
  AttackFigures figures;
  Attackers attackers(host.socket());
  Latencies latencies = callFor(duration, *bystander);
  for (int more = 0; more < kMoreSeconds && lacksAnEffect(attackers.effects()); ++more) {
    latencies.add(callFor(std::chrono::seconds(1), *bystander));
  }
  figures.calls = latencies.count();
  figures.callP50 = latencies.quantile(0.5);
  figures.callP99 = latencies.quantile(0.99);
  figures.mostWaited = latencies.quantile(1 - 1e-9);
  figures.connections = attackers.connections();
  figures.effects = attackers.effects();
  addEffectsOnHost(host, *control, uptimeBefore, figures.effects);
  figures.ended = millisecondsToEnd(host);
  return figures;
}

std::string complaintAbout(const AttackFigures& figures, std::uint64_t mostP99) {
  if (figures.calls == 0) return "the bystander was not answered while the host was attacked";
  if (figures.connections == 0) return "nobody has attacked the host";
  if (figures.effects.empty()) return "nobody has looked at what the attacks did";
  for (const Effect& effect : figures.effects) {
    if (effect.count == 0) return "an attack had no effect: " + effect.name;
  }
  if (figures.ended < 0) return "the attacked host did not end within 2 s of SIGTERM";
  if (figures.callP99 <= mostP99) return "";
  return "p99 of the bystander's calls is " + std::to_string(figures.callP99) +
         " us while the host is attacked; at most " + std::to_string(mostP99) + " are due";
}

std::string toText(const AttackFigures& figures) {
  std::ostringstream text;
  text << "attackers' connections: " << figures.connections << '\n'
       << "  calls of a bystander answered: " << figures.calls << '\n'
       << "  p50 of a call: " << figures.callP50 << " us\n"
       << "  p99 of a call: " << figures.callP99 << " us\n"
       << "  the longest: " << figures.mostWaited << " us\n"
       << "  from SIGTERM to the end: " << figures.ended << " ms\n";
  for (const Effect& effect : figures.effects) {
    text << "  " << effect.name << ": " << effect.count << '\n';
  }
  return text.str();
}

}  // namespace load
