#include <nlohmann/json.hpp>

#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "runtime/Device.h"
#include "services/SecurityLog.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

// The framework thread waits while they are read, about 2 ms.
constexpr std::size_t kRecordsOnPage = 250;

std::string timeText(std::time_t time) {
  return instantText(std::chrono::seconds(time));
}

Json recordJson(const SecurityRecord& record) {
  Json json = {{"number", record.number},         {"time", timeText(record.time)},
               {"facility", record.facility},     {"severity", record.severity},
               {"eventClass", record.eventClass}, {"eventCode", record.eventCode},
               {"failure", record.failure},       {"count", record.count}};
  if (record.count > 1) json["last"] = timeText(record.lastTime);
  if (record.lost > 0) json["lost"] = record.lost;
  json["text"] = record.text;
  json["subject"] = record.subject;
  json["origin"] = record.origin;
  return json;
}

void describeKept(const SecurityLog::Kept& kept, Json& reply) {
  reply["kept"] = kept.records;
  reply["dropped"] = kept.dropped;
  reply["unwritten"] = kept.unwritten;
  std::string note = "a power cut may lose the latest records; stopping the host does not";
  if (kept.unwritten > 0) {
    note = "after the last record, " + std::to_string(kept.unwritten) + " could not be written; " +
           note;
  }
  if (kept.dropped > 0) {
    note = "records kept: " + std::to_string(kept.records) +
           "; dropped: " + std::to_string(kept.dropped) + ", because the log keeps the newest " +
           std::to_string(SecurityLog::kSets) + " accepted sets, " +
           std::to_string(SecurityLog::kHostActs) + " other accepted records and " +
           std::to_string(SecurityLog::kRefused) + " refused records; " + note;
  }
  if (kept.last > 0 || kept.unwritten > 0) reply["note"] = note;
}

}  // namespace

// One page: the records after the number asked for. While there are more, the answer holds the
// number to ask for next.
void actOnSecurityLog(Controller& controller, const Json& request, const Channel& channel) {
  SecurityLog& log = controller.device().securityLog();
  const bool first = !request.contains("after");
  std::vector<Json> records;
  for (const SecurityRecord& record :
       log.list(first ? 0 : numberMember(request, "after", 0, INT64_MAX), kRecordsOnPage)) {
    records.push_back(recordJson(record));
  }
  const Json page = oldestThatFit(records);
  const std::int64_t last = page.empty() ? INT64_MAX : page.back()["number"].get<std::int64_t>();
  const SecurityLog::Kept kept = log.kept();
  Json reply = {{"ok", true}, {"records", page}};
  describeKept(kept, reply);
  if (last < kept.last) reply["after"] = last;
  answer(channel, reply);
}

}  // namespace host
