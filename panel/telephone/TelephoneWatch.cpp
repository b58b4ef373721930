#include "telephone/TelephoneWatch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "base/Error.h"
#include "base/StartThread.h"
#include "remote/RemoteClient.h"
#include "verbs/MethodJson.h"

namespace panel {
namespace {

using host::Error;
using host::Json;
using host::RemoteClient;
using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

constexpr milliseconds kSearch(500);   // between two looks for a host
constexpr milliseconds kRefresh(200);  // shortest time between two readings of the state
constexpr milliseconds kAtLeast = std::chrono::seconds(2);  // another client may change the speed
constexpr std::size_t kAtOnce = 500;  // events and lines between two readings of the state

constexpr std::size_t kRecords = 100;  // of the security log, for a page that comes later

constexpr const char* kStatus = R"({"verb":"status"})";
constexpr const char* kUpcoming = R"({"verb":"upcoming","plot":true})";
constexpr const char* kHistory = R"({"verb":"history","count":200})";
constexpr const char* kKeys = R"({"verb":"keys"})";

Json entryOf(const host::ReceivedEvent& event) {
  Json entry = {{"event", event.method.getName()},
                {"parameters", host::parametersJson(event.method)}};
  if (event.time) entry.update(host::eventTimeJson(event.time->utc, event.time->offset));
  return entry;
}

// The connections to one host while it runs. Throws when the host is gone, and at `ending`.
class Attachment {
 public:
  Attachment(const HostSockets& sockets, const std::stop_token& ending)
      : m_control(sockets.control),
        m_calls(sockets.call, RemoteClient::Events::timed),
        m_hangUp(ending, [this] {
          for (const int each : descriptors()) ::shutdown(each, SHUT_RDWR);
        }) {
    Method observe("observeTimeEvents", Method::call);
    if (!m_calls.call(observe, kAnswerLimit)) throw Error("no reply; the host is busy");
    m_log = m_control.startControl(R"({"verb":"log","follow":true})");
  }

  // Tells the events and log lines that have come. False: none.
  bool readEntries(const TelephoneWatch::Tell& tell) {
    Json entries = Json::array();
    while (entries.size() < kAtOnce) {
      if (const auto event = m_calls.nextReceivedEvent(milliseconds(0))) {
        entries.push_back(entryOf(*event));
      } else if (const auto line = m_control.nextAnswer(m_log, milliseconds(0))) {
        if (line->last) throw Error("the host ended the log");
        entries.push_back({{"line", objectIn(line->json)}});
      } else {
        break;
      }
    }
    if (!entries.empty()) tell("entries", entries);
    return !entries.empty();
  }

  // The service logs each reading of a key, so the keys are read only when one may have changed.
  void readStates(const TelephoneWatch::Tell& tell) {
    tell("status", objectIn(read(kStatus)));
    tell("upcoming", objectIn(read(kUpcoming)));
    std::string history = read(kHistory);
    const bool changed = readRecords() || history != m_history;
    if (!changed) return;
    tell("history", objectIn(history));
    tell("security", {{"records", m_records}});
    tell("keys", objectIn(read(kKeys)));
    m_history = std::move(history);
  }

  [[nodiscard]] std::array<int, 2> descriptors() const {
    return {m_control.descriptor(), m_calls.descriptor()};
  }

 private:
  // Reads on in the security log, which is given in parts, oldest first. False: nothing new.
  bool readRecords() {
    const std::int64_t before = m_after;
    for (bool more = true; more;) {
      if (m_records.size() > kRecords)
        m_records.erase(m_records.begin(), m_records.end() - kRecords);
      const Json request = {{"verb", "security-log"}, {"after", m_after}};
      const Json part = objectIn(read(request.dump()));
      for (const Json& record : part.at("records")) {
        m_after = record.at("number");
        m_records.push_back(record);
      }
      more = part.contains("after");
    }
    return m_after != before;
  }

  std::string read(const std::string& request) {
    const auto text = m_control.control(request, kAnswerLimit);
    if (!text) throw Error("no reply; the host is busy or stopped");
    return *text;
  }

  RemoteClient m_control;
  RemoteClient m_calls;
  std::stop_callback<std::function<void()>> m_hangUp;
  std::uint32_t m_log = 0;
  std::string m_history;  // as it was when the keys were read
  std::int64_t m_after = 0;
  Json m_records = Json::array();  // up to that number
};

}  // namespace

TelephoneWatch::TelephoneWatch(HostSockets sockets, Tell tell)
    : m_sockets(std::move(sockets)),
      m_tell(std::move(tell)),
      m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!m_wake.valid()) throw Error("no descriptor for a telephone; raise the limit of open files");
  m_thread = host::startThread("watch of a telephone", [this] { run(); });
}

TelephoneWatch::~TelephoneWatch() {
  m_ending.request_stop();
  poke();
  m_thread.join();
}

void TelephoneWatch::poke() {
  ::eventfd_write(m_wake.get(), 1);
}

void TelephoneWatch::run() {
  while (!m_ending.stop_requested()) {
    try {
      follow();
    } catch (const std::exception& error) {
      // A host at full speed drops who is slower, and is there again.
      if (std::exchange(m_attached, false)) continue;
      m_tell("attached", {{"attached", false}, {"why", error.what()}});
      wait({-1, -1}, kSearch);
    }
  }
}

void TelephoneWatch::follow() {
  Attachment host(m_sockets, m_ending.get_token());
  host.readStates(m_tell);
  m_attached = true;
  m_tell("attached", {{"attached", true}});
  auto last = SteadyClock::now();
  for (bool changed = false; !m_ending.stop_requested();) {
    const auto due = last + (changed ? kRefresh : kAtLeast);
    const auto left = std::chrono::ceil<milliseconds>(due - SteadyClock::now());
    if (wait(host.descriptors(), std::max(left, milliseconds(0)))) changed = true;
    if (host.readEntries(m_tell)) changed = true;
    if (SteadyClock::now() < due && !(changed && SteadyClock::now() >= last + kRefresh)) continue;
    host.readStates(m_tell);
    changed = false;
    last = SteadyClock::now();
  }
}

bool TelephoneWatch::wait(std::array<int, 2> others, milliseconds limit) {
  std::array<pollfd, 3> polled{
      {{m_wake.get(), POLLIN, 0}, {others[0], POLLIN, 0}, {others[1], POLLIN, 0}}};
  ::poll(polled.data(), polled.size(), static_cast<int>(limit.count()));
  eventfd_t pokes = 0;
  return ::eventfd_read(m_wake.get(), &pokes) == 0;
}

}  // namespace panel
