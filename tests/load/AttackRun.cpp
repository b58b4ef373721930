#include "load/AttackRun.h"

#include <poll.h>

#include <csignal>
#include <deque>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "base/MillisecondsUntil.h"
#include "integration/RestartableHost.h"
#include "load/Attackers.h"
#include "load/DueCalls.h"
#include "remote/FrameSocket.h"
#include "remote/RemoteClient.h"
#include "services/SecurityLog.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kEndLimit(2);
constexpr int kMoreSeconds = 20;  // that a slow machine may need until each attack takes effect

// Well-behaved clients. Each call is sent by the next of them, so that none has more than a few
// open calls even when the host freezes for a second: a client with many open calls would wait for
// turns.
class Bystanders final : public CallLine {
 public:
  explicit Bystanders(const std::filesystem::path& socket) {
    for (int i = 0; i < kBystanders; ++i) {
      host::FrameSocket& client = m_clients.emplace_back(socket);
      client.send({host::FrameKind::hello, 0, "json"});
      m_polled.push_back({client.descriptor(), POLLIN, 0});
    }
  }

  Instant now() override { return Clock::now(); }

  void call(std::uint32_t number) override {
    m_clients[number % kBystanders].send({host::FrameKind::call, number, R"({"name":"getTime"})"});
  }

  std::optional<std::uint32_t> replied(Instant until) override {
    if (m_replied.empty()) read(until);
    if (m_replied.empty()) return std::nullopt;
    const std::uint32_t number = m_replied.front();
    m_replied.pop_front();
    return number;
  }

 private:
  static constexpr int kBystanders = 50;

  void read(Instant until) {
    ::poll(m_polled.data(), m_polled.size(), host::millisecondsUntil(until));
    for (std::size_t i = 0; i < m_polled.size(); ++i) {
      if (m_polled[i].revents != 0) readFrom(m_clients[i]);
    }
  }

  void readFrom(host::FrameSocket& client) {
    host::Frame frame;
    while (client.receive(frame, now())) {
      if (frame.kind != host::FrameKind::reply) {
        throw std::runtime_error("a bystander is refused: " + std::string(frame.payload));
      }
      m_replied.push_back(frame.id);
    }
  }

  std::deque<host::FrameSocket> m_clients;
  std::vector<pollfd> m_polled;
  std::deque<std::uint32_t> m_replied;
};

nlohmann::json ask(host::RemoteClient& control, const std::string& json) {
  const auto reply = control.control(json, kAnswerLimit);
  if (!reply) throw std::runtime_error("not answered: " + json);
  return nlohmann::json::parse(*reply);
}

// Fills the security log with records of sets up to its limit, so that a listing is as long as
// possible.
void fillSecurityLog(host::RemoteClient& control) {
  constexpr int kAtOnce = 500;
  for (int record = 0; record < host::SecurityLog::kSets; record += kAtOnce) {
    std::vector<std::uint32_t> ids;
    for (int i = 0; i < kAtOnce; ++i) {
      const char* const value = i % 2 == 0 ? "0" : "1";  // repeats share one record
      ids.push_back(control.startControl(R"({"verb":"set","key":"date-format","value":")" +
                                         std::string(value) + R"("})"));
    }
    for (const std::uint32_t id : ids) {
      if (!control.nextAnswer(id, kAnswerLimit)) throw std::runtime_error("a set was not answered");
    }
  }
}

// Whether a record has the text. The list comes page by page.
bool isRecorded(host::RemoteClient& control, const std::string& text) {
  std::string request = R"({"verb":"security-log"})";
  for (;;) {
    const nlohmann::json page = ask(control, request);
    if (page.dump().find(text) != std::string::npos) return true;
    const auto after = page.value("after", std::int64_t{0});
    if (after == 0) return false;
    request = R"({"verb":"security-log","after":)" + std::to_string(after) + "}";
  }
}

std::string uptime(host::RemoteClient& control) {
  return ask(control, R"({"verb":"clock","action":"show"})").at("uptime");
}

// Effects that the host's state and log show.
void addEffectsOnHost(integration::RestartableHost& host, host::RemoteClient& control,
                      const std::string& uptimeBefore, Effects& effects) {
  effects.emplace_back("the clock was advanced", uptime(control) != uptimeBefore);
  effects.emplace_back("the date format was set",
                       ask(control, R"({"verb":"get","key":"date-format"})").at("value") == "2");
  effects.emplace_back("the time was set", isRecorded(control, "Remote call setTime(5, 5, 5)"));
  effects.emplace_back(
      "the security log is full",
      ask(control, R"({"verb":"security-log"})").at("kept").get<int>() >= host::SecurityLog::kSets);
  effects.emplace_back("the resolver was called",
                       host.program().says(std::string("silent about ") + kSilentName));
}

std::int64_t millisecondsToEnd(integration::RestartableHost& host) {
  const auto begin = Clock::now();
  host.program().signal(SIGTERM);
  if (!host.program().ends(kEndLimit)) return -1;
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

// The name of the first attack that had no effect; empty if there is none.
std::string withoutEffect(const Effects& effects) {
  for (const auto& [name, count] : effects) {
    if (count == 0) return name;
  }
  return "";
}

}  // namespace

AttackFigures attackAHost(std::chrono::milliseconds duration) {
  integration::RestartableHost host(CLOCK_SILENT_HOST, {"--log-level", "2", "--network", "up"});
  host.start();
  const auto control = host.connectControl();
  fillSecurityLog(*control);
  const std::string uptimeBefore = uptime(*control);
  Bystanders bystanders(host.socket());
  AttackFigures figures;
  Attackers attackers(host.socket());
  figures.calls = callWhenDue(bystanders, duration);
  for (int more = 0; more < kMoreSeconds && !withoutEffect(attackers.effects()).empty(); ++more) {
    figures.calls.add(callWhenDue(bystanders, std::chrono::seconds(1)));
  }
  figures.connections = attackers.connections();
  figures.effects = attackers.effects();
  addEffectsOnHost(host, *control, uptimeBefore, figures.effects);
  figures.ended = millisecondsToEnd(host);
  return figures;
}

std::string complaintAbout(const AttackFigures& figures, std::uint64_t mostP99) {
  if (figures.calls.count() == 0) return "no bystander was answered while the host was attacked";
  if (figures.connections == 0) return "no attacker has connected";
  if (figures.effects.empty()) return "the effects of the attacks were not measured";
  const std::string attack = withoutEffect(figures.effects);
  if (!attack.empty()) return "an attack had no effect: " + attack;
  if (figures.ended < 0) return "the attacked host did not end within 2 s of SIGTERM";
  const std::uint64_t p99 = figures.calls.quantile(0.99);
  if (p99 <= mostP99) return "";
  return "p99 of the bystanders' calls is " + std::to_string(p99) +
         " us while the host is attacked; the bound is " + std::to_string(mostP99) + " us";
}

std::string toText(const AttackFigures& figures) {
  std::ostringstream text;
  text << "attackers' connections: " << figures.connections << '\n'
       << "  calls of bystanders answered: " << figures.calls.count() << '\n'
       << "  p50 of a call: " << figures.calls.quantile(0.5) << " us\n"
       << "  p99 of a call: " << figures.calls.quantile(0.99) << " us\n"
       << "  the longest: " << figures.calls.quantile(1) << " us\n"
       << "  from SIGTERM to the end: " << figures.ended << " ms\n";
  for (const auto& [name, count] : figures.effects) text << "  " << name << ": " << count << '\n';
  return text.str();
}

}  // namespace load
