#include <algorithm>
#include <cstdint>
#include <ctime>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <utility>

#include "DataStorage.h"
#include "base/Error.h"
#include "clock/VirtualClock.h"
#include "framework/DataAccess.h"
#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "runtime/Device.h"
#include "services/LocalManagement.h"
#include "verbs/Landmarks.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"
#include "verbs/VerbWords.h"

namespace host {
namespace {

using std::chrono::floor;
using std::chrono::seconds;

constexpr int kUsual = 20;  // rows when neither N nor --until is given

constexpr time_t kHour = 3600;
constexpr time_t kHalfDay = 12 * kHour;
constexpr time_t kYear = 366 * 86400;
constexpr time_t kLastOf32Bits = INT32_MAX;  // 2038-01-19T03:14:07Z
constexpr time_t kFirstRestart = 601;        // seconds after a full hour
constexpr time_t kLastRestart = 1200;

constexpr const char* kRestart = "NTP restart";
constexpr const char* kReplaced = "the NTP client is replaced";

// Something that will happen, once or repeatedly. Instants are in the time that the telephone
// shows.
struct Upcoming {
  std::string kind;
  std::string what;
  std::function<std::optional<time_t>(time_t after)> next;
  time_t spread = 0;  // seconds: it happens between `next` and that much later
};

// Local midnight of 2037-12-31, of the last year of setDate.
time_t lastDay() {
  tm day{};
  day.tm_year = 2037 - 1900;
  day.tm_mon = 11;
  day.tm_mday = 31;
  day.tm_isdst = -1;
  return std::mktime(&day);
}

std::optional<time_t> once(time_t at, time_t after) {
  return at > after ? std::optional(at) : std::nullopt;
}

// At `at`, and whenever the period has passed since.
std::optional<time_t> repeated(time_t at, time_t period, time_t after) {
  return after < at ? at : at + ((after - at) / period + 1) * period;
}

bool hasClient(Device& device) {
  const std::string server =
      device.store().getItem(DASUtilsStrings::ClockSettingsSchema, "SNTPaddress").value_or("");
  return device.management().value("interface-status") == "up" && !server.empty() &&
         server != "0.0.0.0" && server != "::";
}

// What the telephone will show when the timer expires.
time_t instantOf(Device& device, const NamedTimer& timer) {
  const auto left = timer.expiry - device.clock().uptime();
  return floor<seconds>(device.clock().shown() + left).count();
}

// Timers follow the uptime. So after a jump the armed hour timer expires late, and only then
// re-arms the midnight timer.
struct SyncTimers {
  std::optional<time_t> hour;
  std::optional<time_t> midnight;
  // Of a time that has stopped: seconds from one hour timer to the next, as the next full hour
  // stays that far ahead. Each arms the midnight timer anew, which never expires. 0: it goes on.
  time_t stopped = 0;

  [[nodiscard]] std::optional<time_t> nextHour(time_t after) const {
    if (hour && stopped > 0) return repeated(*hour, stopped, after);
    if (hour && after < *hour) return hour;
    return rowNamed(landmarks(), "hour")->next(after);
  }
  [[nodiscard]] std::optional<time_t> nextMidnight(time_t after) const {
    const bool first = midnight && (!hour || *midnight <= *hour);
    if (first && after < *midnight) return midnight;
    if (stopped > 0) return std::nullopt;
    return rowNamed(landmarks(), "midnight")->next(std::max(after, hour.value_or(after)));
  }
};

// A time set by hand stops at the end of 32-bit time.
SyncTimers syncTimers(Device& device, time_t now) {
  SyncTimers sync;
  if (device.clock().setByHand() && now >= kLastOf32Bits) {
    sync.stopped = kHour - (kLastOf32Bits + offsetAt(seconds(kLastOf32Bits)).count()) % kHour;
  }
  for (const NamedTimer& timer : device.timers()) {
    if (timer.name == "time sync") sync.hour = instantOf(device, timer);
    if (timer.name == "date sync") sync.midnight = instantOf(device, timer);
  }
  return sync;
}

// The service restarts its client at a random time, kFirstRestart to kLastRestart after each full
// hour.
std::optional<time_t> nextRestart(const SyncTimers& sync, time_t after) {
  for (auto hour = sync.nextHour(after - kFirstRestart); hour; hour = sync.nextHour(*hour)) {
    if (*hour + kFirstRestart > after) return *hour + kFirstRestart;
  }
  return std::nullopt;
}

// client: a network and a server. Without them the timer of the restart is armed all the same.
Upcoming ofTimer(Device& device, const NamedTimer& timer, bool client) {
  const time_t at = instantOf(device, timer);
  if (timer.name == "fallback refresh") {
    return {"refresh", "the system time is saved",
            [at](time_t after) { return repeated(at, kHalfDay, after); }};
  }
  const std::string name(timer.name);
  const char* what = "observers are notified";
  if (name == kRestart) what = client ? kReplaced : "a timer expires: no client to restart";
  return {name, what, [at](time_t after) { return once(at, after); }};
}

// The restart that is armed now belongs to the last full hour, and has its own row.
Upcoming laterRestarts(const SyncTimers& sync, time_t now) {
  const time_t hour = sync.nextHour(now).value_or(now);
  return {kRestart, kReplaced,
          [sync, hour](time_t after) { return nextRestart(sync, std::max(after, hour)); },
          kLastRestart - kFirstRestart};
}

std::vector<Upcoming> allUpcoming(Device& device, time_t now) {
  const SyncTimers sync = syncTimers(device, now);
  std::vector<Upcoming> all = {
      {"hour", "time event; both sync timers and the NTP restart are armed",
       [sync](time_t after) { return sync.nextHour(after); }},
      {"midnight", "date event", [sync](time_t after) { return sync.nextMidnight(after); }},
      {"zone change", "",
       [sync](time_t after) {
         return sync.stopped > 0 ? std::nullopt : rowNamed(landmarks(), "dst")->next(after);
       }},
      {"limit", "the last day that can be set by hand",
       [at = lastDay()](time_t after) { return once(at, after); }},
      {"limit", "the end of 32-bit time: a time set by hand stops here",
       [](time_t after) { return once(kLastOf32Bits, after); }},
  };
  const bool client = hasClient(device);
  for (const NamedTimer& timer : device.timers()) {
    if (timer.name == "time sync" || timer.name == "date sync") continue;
    all.push_back(ofTimer(device, timer, client));
  }
  if (client) all.push_back(laterRestarts(sync, now));
  return all;
}

Json rowOf(const Upcoming& each, time_t at, time_t now) {
  Json row = {{"time", instantText(seconds(at))},
              {"local", localInstantText(seconds(at), offsetAt(seconds(at)))},
              {"seconds", at},
              {"in", at - now},
              {"kind", each.kind}};
  if (each.spread > 0) row["latest"] = instantText(seconds(at + each.spread));
  if (each.kind == "zone change") {
    row["before"] = offsetAt(seconds(at - 1)).count();
    row["after"] = offsetAt(seconds(at)).count();
  } else {
    row["what"] = each.what;
  }
  return row;
}

using Instance = std::pair<time_t, const Upcoming*>;

void addNext(const Upcoming& each, time_t after, time_t last, std::set<Instance>& all) {
  const auto at = each.next(after);
  if (at && *at <= last) all.emplace(*at, &each);
}

struct Rows {
  std::vector<Json> rows;
  bool more = false;  // than these, up to the same instant
};

// The first `most` rows up to `last`, and the first of each kind.
Rows rowsOf(const std::vector<Upcoming>& all, time_t now, time_t last, int most) {
  std::set<Instance> coming;
  for (const Upcoming& each : all) addNext(each, now, last, coming);
  std::set<Instance> taken = coming;
  Rows found;
  for (int i = 0; !coming.empty() && !found.more; ++i) {
    const Instance next = coming.extract(coming.begin()).value();
    found.more = i >= most && !taken.contains(next);
    if (!found.more) taken.insert(next);
    addNext(*next.second, next.first, last, coming);
  }
  for (const auto& [at, each] : taken) found.rows.push_back(rowOf(*each, at, now));
  return found;
}

// The UTC offsets of the next year: now, and after each change.
Json offsetsFrom(time_t now) {
  Json offsets = {{{"seconds", now}, {"offset", offsetAt(seconds(now)).count()}}};
  const Landmark& change = *rowNamed(landmarks(), "dst");
  for (auto at = change.next(now); at && *at < now + kYear; at = change.next(*at)) {
    offsets.push_back({{"seconds", *at}, {"offset", offsetAt(seconds(*at)).count()}});
  }
  return offsets;
}

}  // namespace

void actOnUpcoming(Controller& controller, const Json& request, const Channel& channel) {
  Device& device = controller.device();
  const auto now = static_cast<time_t>(floor<seconds>(device.clock().shown()).count());
  const bool limited = request.contains("until");
  const bool counted = request.contains("count");
  const std::int64_t until =
      limited ? numberMember(request, "until", 0, kLastInstant.count()) : kLastInstant.count();
  const int usual = limited ? kMostRows : kUsual;
  const auto most =
      static_cast<int>(counted ? numberMember(request, "count", 1, kMostRows) : usual);
  if (until <= now) {
    throw Error("the telephone shows " + instantText(seconds(now)) + ", which is not before " +
                instantText(seconds(until)) + "; write a later instant");
  }
  Json reply = {{"ok", true}, {"now", instantText(seconds(now))}};
  const bool stops = device.clock().setByHand() && now < kLastOf32Bits;
  const time_t last = stops ? std::min<time_t>(until, kLastOf32Bits) : until;
  const Rows found = rowsOf(allUpcoming(device, now), now, last, most);
  reply["upcoming"] = found.rows;
  if (found.more && limited && !counted) reply["more"] = true;
  if (request.value("plot", Json(false)) == Json(true)) {
    reply["offsets"] = offsetsFrom(now);
  }
  answer(channel, reply);
}

}  // namespace host
