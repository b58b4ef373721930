#include "services/SecurityLog.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "platform/Origin.h"
#include "platform/ShownText.h"
#include "services/SqliteDatabase.h"
#include "services/SqliteStatement.h"

namespace host {
namespace {

// The classification of the service's own records, which the host's share.
constexpr int kFacility = 4;
constexpr int kSeverity = 1;
constexpr int kEventClass = 5;
constexpr int kManagementSet = 3;  // event code; each accepted one is a sync

const std::string kColumns =
    "number, failure, lost, count, time, last_time, facility, severity, event_class, event_code,"
    " text, subject, origin";

// Accepted and refused ones lie apart: each kind has its own oldest.
constexpr const char* kSchema = R"sql(
CREATE TABLE record(
  number INTEGER NOT NULL, failure INTEGER NOT NULL, lost INTEGER NOT NULL,
  count INTEGER NOT NULL, time INTEGER NOT NULL, last_time INTEGER NOT NULL,
  facility INTEGER NOT NULL, severity INTEGER NOT NULL,
  event_class INTEGER NOT NULL, event_code INTEGER NOT NULL,
  text TEXT NOT NULL, subject TEXT NOT NULL, origin TEXT NOT NULL,
  PRIMARY KEY(failure, number)) STRICT, WITHOUT ROWID)sql";

// Version 1 had one kind, no counts, and triggers, which go with its table.
const std::string kUpgrade =
    "ALTER TABLE record RENAME TO record_1;" + std::string(kSchema) + ";INSERT INTO record(" +
    kColumns +
    ") SELECT number, failure, 0, 1, time, time, facility, severity, event_class, event_code, text,"
    " subject, origin FROM record_1; DROP TABLE record_1";

const std::string kProbe = "SELECT " + kColumns + " FROM record LIMIT 0";

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

Repeats::Attempt attemptOf(const SecurityRecord& record) {
  std::string content = record.text + '\0' + record.subject;
  for (const int number : {record.facility, record.severity, record.eventClass, record.eventCode}) {
    content += '\0' + std::to_string(number);
  }
  const bool cheap = record.failure || record.eventCode != kManagementSet;
  return {record.origin, record.failure, record.eventCode, cheap, std::move(content)};
}

}  // namespace

// Prepared when first used: a start does not wait for them.
struct SecurityLog::Statements {
  explicit Statements(const SqliteDatabase& database);

  SqliteStatement insert;
  SqliteStatement count;
  SqliteStatement drop;
  SqliteStatement list;
  SqliteStatement tally;
};

SecurityLog::Statements::Statements(const SqliteDatabase& database)
    : insert(database,
             "INSERT INTO record(" + kColumns +
                 ") VALUES(?1, ?2, ?3, 1, ?4, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)",
             SqliteStatement::Prepared::whenUsed),
      count(
          database,
          "UPDATE record SET count = count + 1, last_time = ?3 WHERE failure = ?1 AND number = ?2",
          SqliteStatement::Prepared::whenUsed),
      drop(database,
           "DELETE FROM record WHERE failure = ?1 AND number IN"
           " (SELECT number FROM record WHERE failure = ?1 ORDER BY number LIMIT ?2)"
           " RETURNING number, lost",
           SqliteStatement::Prepared::whenUsed),
      list(database,
           "SELECT " + kColumns +
               " FROM record WHERE failure = 0 AND number > ?1 UNION ALL SELECT " + kColumns +
               " FROM record WHERE failure = 1 AND number > ?1 ORDER BY number LIMIT ?2",
           SqliteStatement::Prepared::whenUsed),
      tally(database,
            "SELECT max(number), sum(failure = 0), sum(failure = 1), sum(lost) FROM record",
            SqliteStatement::Prepared::whenUsed) {}

SecurityLog::SecurityLog() : SecurityLog(std::make_unique<SqliteDatabase>(kStore)) {}

SecurityLog::SecurityLog(const std::filesystem::path& folder)
    : SecurityLog(std::make_unique<SqliteDatabase>(folder / kFileName, kStore)) {}

SecurityLog::SecurityLog(std::unique_ptr<SqliteDatabase> database)
    : m_database(std::move(database)), m_statements(std::make_unique<Statements>(*m_database)) {}

SecurityLog::~SecurityLog() = default;

void SecurityLog::init(Context&) {}

void SecurityLog::shutdown() {}

void SecurityLog::beginLog() {
  const std::lock_guard lock(m_mutex);
  m_database->beginLog();
  readTally();
}

void SecurityLog::foldLater(Later later) {
  const std::lock_guard lock(m_mutex);
  m_database->foldLater([this, later = std::move(later)] { later([this] { fold(); }); });
}

void SecurityLog::fold() {
  const std::lock_guard lock(m_mutex);
  m_database->fold();
}

void SecurityLog::readTally() {
  if (m_tallied) return;
  SqliteStatement& tally = m_statements->tally;
  // An empty log has one row, of nulls: 0.
  m_tallied = tally.next();
  if (m_tallied) m_tally = {tally.number(0), tally.number(1), tally.number(2), tally.number(3)};
  tally.reset();
}

void SecurityLog::note(Event event, bool failure, const std::string& text) {
  record(std::time(nullptr), kFacility, kSeverity, kEventClass, static_cast<int>(event), failure,
         text, "", "");
}

void SecurityLog::record(std::time_t time, int facility, int severity, int eventClass,
                         int eventCode, bool failure, const std::string& text,
                         const std::string& subject, const std::string& origin) {
  const std::lock_guard lock(m_mutex);
  bool written = false;
  try {
    written = write({0, 0, 1, time, time, facility, severity, eventClass, eventCode, failure,
                     clippedText(text, kLongestText), clippedText(subject, kLongestText),
                     clippedText(origin.empty() ? originHere() : origin, kLongestText)});
  } catch (const std::exception&) {
    // No memory for it: as good as not written.
  }
  if (written) return;
  if (m_unwritten == 0) m_database->logFailure("writing");
  ++m_unwritten;
}

bool SecurityLog::write(SecurityRecord record) {
  readTally();
  if (!m_tallied || !m_database->isInPlace()) return false;
  const auto now = std::chrono::steady_clock::now();
  Repeats::Attempt attempt = attemptOf(record);
  // What was lost in between is to be seen: the next one has a record of its own.
  const std::int64_t earlier = m_unwritten > 0 ? 0 : m_repeats.earlier(attempt, now);
  if (earlier != 0) return countIn(earlier, record);
  record.number = m_tally.last + m_unwritten + 1;
  record.lost = m_unwritten;
  if (!append(record)) return false;
  m_repeats.spelledOut(std::move(attempt), record.number, now);
  dropOldest(record.failure);
  return true;
}

bool SecurityLog::countIn(std::int64_t number, const SecurityRecord& record) {
  SqliteStatement& count = m_statements->count;
  count.bind(1, static_cast<std::int64_t>(record.failure));
  count.bind(2, number);
  count.bind(3, static_cast<std::int64_t>(record.time));
  return count.run();
}

bool SecurityLog::append(const SecurityRecord& record) {
  SqliteStatement& insert = m_statements->insert;
  int index = 0;
  for (const std::int64_t number :
       {record.number, static_cast<std::int64_t>(record.failure), record.lost,
        std::int64_t{record.time}, std::int64_t{record.facility}, std::int64_t{record.severity},
        std::int64_t{record.eventClass}, std::int64_t{record.eventCode}}) {
    insert.bind(++index, number);
  }
  for (const std::string* const word : {&record.text, &record.subject, &record.origin}) {
    insert.bind(++index, *word);
  }
  if (!insert.run()) return false;
  m_unwritten = 0;
  m_tally.last = record.number;
  m_tally.lost += record.lost;
  ++(record.failure ? m_tally.refused : m_tally.accepted);
  return true;
}

// A failure leaves one too many, and the next record tries again.
void SecurityLog::dropOldest(bool failure) {
  std::int64_t& kept = failure ? m_tally.refused : m_tally.accepted;
  const std::int64_t excess = kept - (failure ? kRefused : kAccepted);
  if (excess <= 0) return;
  SqliteStatement& drop = m_statements->drop;
  drop.bind(1, static_cast<std::int64_t>(failure));
  drop.bind(2, excess);
  while (drop.next()) {
    --kept;
    m_repeats.forget(drop.number(0));
    m_tally.lost -= drop.number(1);
  }
  if (drop.failed()) m_database->logFailure("dropping the oldest record");
  drop.reset();
}

std::vector<SecurityRecord> SecurityLog::list(std::int64_t after, std::size_t most) {
  const std::lock_guard lock(m_mutex);
  std::vector<SecurityRecord> records;
  const auto bound = std::min(most, static_cast<std::size_t>(kAccepted + kRefused));
  SqliteStatement& list = m_statements->list;
  list.bind(1, after);
  list.bind(2, static_cast<std::int64_t>(bound));
  while (list.next()) records.push_back(recordOf(list));
  if (list.failed()) m_database->logFailure("reading");
  list.reset();
  return records;
}

SecurityLog::Kept SecurityLog::kept() {
  const std::lock_guard lock(m_mutex);
  readTally();
  const std::int64_t records = m_tally.accepted + m_tally.refused;
  return {m_tally.last, records, m_tally.last - records - m_tally.lost, m_unwritten};
}

}  // namespace host
