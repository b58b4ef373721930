#include "services/SecurityLog.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "Logging.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "base/Origin.h"
#include "base/PrintableText.h"

namespace host {
namespace {

// The service's own records have this classification; the host's records use it too.
constexpr int kFacility = 4;
constexpr int kSeverity = 1;
constexpr int kEventClass = 5;
constexpr int kManagementSet = 3;  // event code

// By SecurityLog::Kind.
constexpr std::array kMost = {SecurityLog::kSets, SecurityLog::kHostActs, SecurityLog::kRefused};

const std::string kColumns =
    "number, failure, lost, count, time, last_time, facility, severity, event_class, event_code,"
    " text, subject, origin";

// The key separates accepted and refused records, so that the oldest of each is found fast.
constexpr const char* kSchema = R"sql(
CREATE TABLE record(
  number INTEGER NOT NULL, failure INTEGER NOT NULL, lost INTEGER NOT NULL,
  count INTEGER NOT NULL, time INTEGER NOT NULL, last_time INTEGER NOT NULL,
  facility INTEGER NOT NULL, severity INTEGER NOT NULL,
  event_class INTEGER NOT NULL, event_code INTEGER NOT NULL,
  text TEXT NOT NULL, subject TEXT NOT NULL, origin TEXT NOT NULL,
  PRIMARY KEY(failure, number)) STRICT, WITHOUT ROWID)sql";

// Version 1 had one kind, no counts, and triggers, which are dropped with its table.
const std::string kUpgrade =
    "ALTER TABLE record RENAME TO record_1;" + std::string(kSchema) + ";INSERT INTO record(" +
    kColumns +
    ") SELECT number, failure, 0, 1, time, time, facility, severity, event_class, event_code, text,"
    " subject, origin FROM record_1; DROP TABLE record_1";

const std::string kProbe = "SELECT " + kColumns + " FROM record";

const SqliteStore kStore = {SecurityLog::kVersion, kSchema, kUpgrade.c_str(), kProbe.c_str(),
                            "NORMAL"};

SecurityRecord recordOf(const SqliteStatement& row) {
  SecurityRecord record;
  record.number = row.number(0);
  record.failure = row.number(1) != 0;
  record.lost = row.number(2);
  record.count = row.number(3);
  record.time = static_cast<std::time_t>(row.number(4));
  record.lastTime = static_cast<std::time_t>(row.number(5));
  record.facility = row.integer(6);
  record.severity = row.integer(7);
  record.eventClass = row.integer(8);
  record.eventCode = row.integer(9);
  record.text = row.text(10);
  record.subject = row.text(11);
  record.origin = row.text(12);
  return record;
}

[[noreturn]] void logAndThrow(const std::string& failure) {
  logAppUni("clockhost", kLogError, __FILE__, __LINE__, "%s", failure.c_str());
  throw Error(failure);
}

}  // namespace

SecurityLog::Kind SecurityLog::kindOf(const SecurityRecord& record) {
  if (record.failure) return Kind::refused;
  return record.eventCode == kManagementSet ? Kind::set : Kind::hostAct;
}

Repeats::Attempt SecurityLog::attemptOf(const SecurityRecord& record) {
  std::string content = record.text + '\0' + record.subject;
  for (const int number : {record.facility, record.severity, record.eventClass, record.eventCode}) {
    content += '\0' + std::to_string(number);
  }
  const bool synced = kindOf(record) == Kind::set;
  return {userOf(record.origin), record.failure, record.eventCode, synced, std::move(content)};
}

SecurityLog::SecurityLog() : SecurityLog(std::make_unique<SqliteDatabase>(kStore)) {}

SecurityLog::SecurityLog(const std::filesystem::path& folder)
    : SecurityLog(std::make_unique<SqliteDatabase>(folder / kFileName, kStore,
                                                   SqliteDatabase::Opening::later)) {}

SecurityLog::SecurityLog(std::unique_ptr<SqliteDatabase> database)
    : m_database(std::move(database)),
      m_insert(*m_database, "INSERT INTO record(" + kColumns +
                                ") VALUES(?1, ?2, ?3, 1, ?4, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)"),
      m_count(*m_database,
              "UPDATE record SET count = count + 1, last_time = ?3, text = ?4, subject = ?5,"
              " origin = ?6 WHERE failure = ?1 AND number = ?2"),
      m_drop(*m_database,
             "DELETE FROM record WHERE failure = ?1 AND number IN"
             " (SELECT number FROM record WHERE failure = ?1 AND (failure OR (event_code = " +
                 std::to_string(kManagementSet) +
                 ") = ?2) ORDER BY number LIMIT ?3) RETURNING number, lost"),
      m_list(*m_database,
             "SELECT " + kColumns +
                 " FROM record WHERE failure = 0 AND number > ?1 UNION ALL SELECT " + kColumns +
                 " FROM record WHERE failure = 1 AND number > ?1 ORDER BY number LIMIT ?2"),
      m_sum(*m_database,
            "SELECT max(number), sum(NOT failure AND event_code = ?1),"
            " sum(NOT failure AND event_code <> ?1), sum(failure), sum(lost) FROM record") {}

void SecurityLog::open() {
  const MutexLock lock(m_mutex);
  m_database->open();
}

void SecurityLog::openToRead() {
  try {
    m_database->open();
  } catch (const Error& error) {
    logAndThrow(error.what());
  }
}

void SecurityLog::readTally() {
  if (m_tallied) return;
  m_sum.bind(1, std::int64_t{kManagementSet});
  // For an empty log the row is all nulls, which read as 0.
  m_tallied = m_sum.next();
  if (m_tallied) {
    m_tally = {
        m_sum.number(0), {m_sum.number(1), m_sum.number(2), m_sum.number(3)}, m_sum.number(4)};
  }
  m_sum.reset();
}

void SecurityLog::note(Event event, bool failure, const std::string& text) {
  record(std::time(nullptr), kFacility, kSeverity, kEventClass, static_cast<int>(event), failure,
         text, "", "");
}

void SecurityLog::record(std::time_t time, int facility, int severity, int eventClass,
                         int eventCode, bool failure, const std::string& text,
                         const std::string& subject, const std::string& origin) {
  const MutexLock lock(m_mutex);
  bool written = false;
  try {
    m_database->open();
    written = write(
        {0, 0, 1, time, time, facility, severity, eventClass, eventCode, failure,
         clippedText(text, kLongestText), clippedText(subject, kLongestText),
         clippedText(origin.empty() ? originHere() : std::string_view(origin), kLongestText)});
  } catch (const std::exception&) {
    // No memory, or it cannot be opened: the record counts as not written.
  }
  if (!written) countUnwritten();
}

// Must not throw, because destructors write records too, also during stack unwinding.
void SecurityLog::countUnwritten() {
  if (m_unwritten++ > 0) return;
  try {
    m_database->logFailure("writing");
  } catch (const std::exception&) {
    // No memory for the line: the next record that is written reports the gap.
  }
}

bool SecurityLog::write(SecurityRecord record) {
  readTally();
  if (!m_tallied || !m_database->isInPlace()) return false;
  const auto now = std::chrono::steady_clock::now();
  Repeats::Attempt attempt = attemptOf(record);
  // After a loss the next attempt gets a new record, which reports the loss.
  const std::int64_t earlier = m_unwritten > 0 ? 0 : m_repeats.earlier(attempt, now);
  if (earlier != 0) return countIn(earlier, record);
  record.number = m_tally.last + m_unwritten + 1;
  record.lost = m_unwritten;
  if (!append(record)) return false;
  m_repeats.recorded(std::move(attempt), record.number, now);
  dropOldest(kindOf(record));
  return true;
}

bool SecurityLog::countIn(std::int64_t number, const SecurityRecord& record) {
  m_count.bind(1, static_cast<std::int64_t>(record.failure));
  m_count.bind(2, number);
  m_count.bind(3, static_cast<std::int64_t>(record.time));
  m_count.bind(4, record.text);
  m_count.bind(5, record.subject);
  m_count.bind(6, record.origin);
  return m_count.run();
}

bool SecurityLog::append(const SecurityRecord& record) {
  int index = 0;
  for (const std::int64_t number :
       {record.number, static_cast<std::int64_t>(record.failure), record.lost,
        std::int64_t{record.time}, std::int64_t{record.facility}, std::int64_t{record.severity},
        std::int64_t{record.eventClass}, std::int64_t{record.eventCode}}) {
    m_insert.bind(++index, number);
  }
  for (const std::string* const word : {&record.text, &record.subject, &record.origin}) {
    m_insert.bind(++index, *word);
  }
  if (!m_insert.run()) return false;
  m_unwritten = 0;
  m_tally.last = record.number;
  m_tally.lost += record.lost;
  ++m_tally.kept[static_cast<std::size_t>(kindOf(record))];
  return true;
}

// After a failure there is one record too many; the next record retries.
void SecurityLog::dropOldest(Kind kind) {
  std::int64_t& kept = m_tally.kept[static_cast<std::size_t>(kind)];
  const std::int64_t excess = kept - kMost[static_cast<std::size_t>(kind)];
  if (excess <= 0) return;
  m_drop.bind(1, static_cast<std::int64_t>(kind == Kind::refused));
  m_drop.bind(2, static_cast<std::int64_t>(kind == Kind::set));
  m_drop.bind(3, excess);
  while (m_drop.next()) {
    --kept;
    m_repeats.forget(m_drop.number(0));
    m_tally.lost -= m_drop.number(1);
  }
  if (m_drop.failed()) m_database->logFailure("dropping the oldest record");
  m_drop.reset();
}

void SecurityLog::failReading() const {
  logAndThrow(m_database->failure("reading"));
}

std::vector<SecurityRecord> SecurityLog::list(std::int64_t after, std::size_t most) {
  const MutexLock lock(m_mutex);
  openToRead();
  std::vector<SecurityRecord> records;
  const auto bound = std::min(most, std::size_t{kSets + kHostActs + kRefused});
  m_list.bind(1, after);
  m_list.bind(2, static_cast<std::int64_t>(bound));
  try {
    while (m_list.next()) records.push_back(recordOf(m_list));
  } catch (...) {
    m_list.reset();
    throw;
  }
  m_list.reset();
  if (m_list.failed()) failReading();
  return records;
}

SecurityLog::Kept SecurityLog::kept() {
  const MutexLock lock(m_mutex);
  openToRead();
  readTally();
  if (!m_tallied) failReading();
  const std::int64_t records = m_tally.kept[0] + m_tally.kept[1] + m_tally.kept[2];
  return {m_tally.last, records, m_tally.last - records - m_tally.lost, m_unwritten};
}

}  // namespace host
