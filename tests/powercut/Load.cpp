#include "powercut/Load.h"

#include <array>
#include <ctime>
#include <deque>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "remote/RemoteClient.h"

namespace powercut {
namespace {

using nlohmann::json;

constexpr std::chrono::seconds kLimit(20);
constexpr std::size_t kMostUnanswered = 4;

// Longer than the load lasts, so that each report moves the clock on; within the clock's years.
constexpr std::int64_t kStep = 1000;

std::string whole(std::uint64_t number) {
  return std::to_string(number % 1'000'000'000);
}

// Sometimes longer than a page of the store.
std::string secret(std::uint64_t number) {
  return std::to_string(number) + std::string(number % 7 == 0 ? 9000 : number % 100, 's');
}

std::string address(std::uint64_t number) {
  return "10." + std::to_string(number >> 16 & 0xff) + "." + std::to_string(number >> 8 & 0xff) +
         "." + std::to_string(number & 0xff);
}

// Quarters of an hour, -12 to 12.
std::string offset(std::uint64_t number) {
  std::string text = std::to_string((static_cast<double>(number % 97) - 48) / 4);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

struct Setting {
  const char* key;
  const char* first;  // default value
  std::string (*value)(std::uint64_t number);
  bool zone = false;  // the service then writes its script
};

constexpr Setting kSettings[] = {
    {"ntp-secret", "", secret},
    {"sntp-addr", "", address},
    {"date-format", "0", whole},
    {"time-format", "0", whole},
    {"sntp-tz-offset", "0", offset, true},
    {"daylight-save-minutes", "60", whole, true},
    {"time-source", "0", whole, true},
};

// Sends sets in order, without waiting for the answer of each.
class Setter {
 public:
  Setter(host::RemoteClient& client, Promises& promises) : m_client(client), m_promises(promises) {}

  void send(const Setting& setting) {
    const std::string value = setting.value(++m_promises.lastValue);
    const auto number = m_promises.sets.asked(setting.key, value);
    const json request = {{"verb", "set"}, {"key", setting.key}, {"value", value}};
    m_unanswered.push_back({setting.key, number, m_client.startControl(request.dump())});
    if (setting.zone) refreshZone();
    while (m_unanswered.size() > kMostUnanswered) takeAnswer();
  }

 private:
  struct Request {
    std::string key;  // empty: not a set
    integration::SetLedger::Number set;
    std::uint32_t id;
  };

  // The service writes its script a millisecond after the set: a paused clock must move for that.
  void refreshZone() {
    m_unanswered.push_back(
        {"", 0, m_client.startControl(R"({"verb":"clock","action":"advance","seconds":0})")});
  }

  void takeAnswer() {
    const Request first = m_unanswered.front();
    const auto answer = m_client.nextAnswer(first.id, kLimit);
    if (!answer) throw host::HostGone("the host does not answer");
    m_unanswered.pop_front();
    if (first.key.empty()) return;
    const bool accepted = json::parse(answer->json).at("ok").get<bool>();
    m_promises.sets.answered(first.key, first.set, accepted);
    if (accepted) ++m_promises.setsAcknowledged;
  }

  host::RemoteClient& m_client;
  Promises& m_promises;
  std::deque<Request> m_unanswered;
};

// Reports a time as the NTP client does, unless the listener does not open the pipe for too long.
void writeReport(const integration::RestartableHost& telephone, std::int64_t instant) {
  constexpr int kTries = 1000;
  int tries = 0;
  while (tries < kTries && !telephone.report(static_cast<std::uint32_t>(instant))) ++tries;
}

std::string utcString(std::int64_t instant) {
  const auto seconds = static_cast<std::time_t>(instant);
  std::tm utc{};
  ::gmtime_r(&seconds, &utc);
  std::array<char, 32> text;
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S+00:00", &utc)};
}

// Sets the clock and reports it as the NTP client does, then saves the time with a call.
void setAndReportTime(host::RemoteClient& client, host::RemoteClient& control,
                      const integration::RestartableHost& telephone, Promises& promises) {
  const std::int64_t instant = promises.lastTime += kStep;
  const std::string expected = utcString(instant);
  const auto number = promises.savedTimes.asked(kSavedTime, expected);
  const json jump = {{"verb", "clock"}, {"action", "jump"}, {"seconds", instant}};
  if (!control.control(jump.dump(), kLimit)) throw host::HostGone("the clock is not set");
  writeReport(telephone, instant);
  Method save("setFallbackTime", Method::call);
  const auto saved = client.call(save, kLimit);
  std::string time;
  if (!saved || !saved->getStringParameter("setFallbackTimeReturn", time, Parameter::out)) return;
  if (time != expected) throw std::runtime_error("saved " + time + " and not " + expected);
  promises.savedTimes.answered(kSavedTime, number, true);
  ++promises.timesAcknowledged;
}

}  // namespace

Promises::Promises() {
  for (const Setting& setting : kSettings) sets.begins(setting.key, setting.first);
  savedTimes.begins(kSavedTime, "2016-06-16T00:00:00+00:00");
}

Load::Load(const integration::RestartableHost& telephone, Promises& promises, std::uint64_t seed)
    : m_host(telephone),
      m_promises(promises),
      m_random(seed),
      m_setter([this] { work(&Load::set); }),
      m_reporter([this] { work(&Load::report); }) {}

Load::~Load() {
  end();
}

void Load::end() {
  if (m_setter.joinable()) m_setter.join();
  if (m_reporter.joinable()) m_reporter.join();
}

std::string Load::fault() const {
  const std::lock_guard lock(m_mutex);
  return m_fault;
}

void Load::work(void (Load::*task)()) try { (this->*task)(); } catch (const host::Error&) {
  // The host has ended.
} catch (const std::exception& error) {
  const std::lock_guard lock(m_mutex);
  if (m_fault.empty()) m_fault = error.what();
}

void Load::set() {
  const auto client = m_host.connectControl();
  Setter setter(*client, m_promises);
  for (;;) setter.send(kSettings[m_random() % std::size(kSettings)]);
}

void Load::report() {
  const auto client = m_host.connect();
  const auto control = m_host.connectControl();
  for (;;) setAndReportTime(*client, *control, m_host, m_promises);
}

}  // namespace powercut
