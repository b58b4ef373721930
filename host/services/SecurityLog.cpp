#include "services/SecurityLog.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/ShownText.h"
#include "services/SqliteDatabase.h"
#include "services/SqliteStatement.h"

namespace host {
namespace {

// The bound and the append-only rule are the file's own, so they also hold for other programs. The
// 10000s are kBound.
constexpr const char* kSchema = R"sql(
CREATE TABLE record(
  number INTEGER PRIMARY KEY, time INTEGER NOT NULL,
  facility INTEGER NOT NULL, severity INTEGER NOT NULL,
  event_class INTEGER NOT NULL, event_code INTEGER NOT NULL,
  failure INTEGER NOT NULL, text TEXT NOT NULL, subject TEXT NOT NULL, origin TEXT NOT NULL) STRICT;
CREATE TRIGGER record_is_new BEFORE INSERT ON record
  WHEN EXISTS (SELECT 1 FROM record WHERE number = NEW.number)
  BEGIN SELECT RAISE(ABORT, 'the security log is append-only'); END;
CREATE TRIGGER record_is_next AFTER INSERT ON record
  WHEN NEW.number <> (SELECT max(number) FROM record) OR
       NEW.number <> 1 AND NOT EXISTS (SELECT 1 FROM record WHERE number = NEW.number - 1)
  BEGIN SELECT RAISE(ABORT, 'the security log is append-only'); END;
CREATE TRIGGER record_is_final BEFORE UPDATE ON record
  BEGIN SELECT RAISE(ABORT, 'the security log is append-only'); END;
CREATE TRIGGER record_stays BEFORE DELETE ON record
  WHEN OLD.number > (SELECT max(number) FROM record) - 10000
  BEGIN SELECT RAISE(ABORT, 'the security log is append-only'); END;
CREATE TRIGGER record_goes AFTER INSERT ON record
  BEGIN DELETE FROM record WHERE number <= NEW.number - 10000; END)sql";

constexpr const char* kColumns =
    "number, time, facility, severity, event_class, event_code, failure, text, subject, origin";

constexpr SqliteStore kStore = {SecurityLog::kVersion, kSchema,
                                "SELECT number, time, facility, severity, event_class, event_code,"
                                " failure, text, subject, origin FROM record LIMIT 0",
                                "NORMAL"};

constexpr auto kWhenUsed = SqliteStatement::Prepared::whenUsed;

SecurityRecord recordOf(const SqliteStatement& row) {
  SecurityRecord record;
  record.number = row.number(0);
  record.time = static_cast<std::time_t>(row.number(1));
  record.facility = row.integer(2);
  record.severity = row.integer(3);
  record.eventClass = row.integer(4);
  record.eventCode = row.integer(5);
  record.failure = row.number(6) != 0;
  record.text = row.text(7);
  record.subject = row.text(8);
  record.origin = row.text(9);
  return record;
}

}  // namespace

SecurityLog::SecurityLog() : SecurityLog(std::make_unique<SqliteDatabase>(kStore)) {}

SecurityLog::SecurityLog(const std::filesystem::path& folder)
    : SecurityLog(std::make_unique<SqliteDatabase>(folder / kFileName, kStore)) {}

SecurityLog::SecurityLog(std::unique_ptr<SqliteDatabase> database)
    : m_database(std::move(database)),
      m_insert(std::make_unique<SqliteStatement>(
          *m_database,
          "INSERT INTO record(time, facility, severity, event_class, event_code, failure, text,"
          " subject, origin) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)",
          kWhenUsed)),
      m_list(std::make_unique<SqliteStatement>(
          *m_database,
          "SELECT " + std::string(kColumns) +
              " FROM record WHERE number > ?1 ORDER BY number LIMIT ?2",
          kWhenUsed)),
      m_kept(std::make_unique<SqliteStatement>(
          *m_database, "SELECT (SELECT min(number) FROM record), (SELECT max(number) FROM record)",
          kWhenUsed)) {}

SecurityLog::~SecurityLog() = default;

void SecurityLog::init(Context&) {}

void SecurityLog::shutdown() {}

void SecurityLog::beginLog() {
  const std::lock_guard lock(m_mutex);
  m_database->beginLog();
}

void SecurityLog::foldLater(Later later) {
  const std::lock_guard lock(m_mutex);
  m_database->foldLater([this, later = std::move(later)] { later([this] { fold(); }); });
}

void SecurityLog::fold() {
  const std::lock_guard lock(m_mutex);
  m_database->fold();
}

void SecurityLog::record(std::time_t time, int facility, int severity, int eventClass,
                         int eventCode, bool failure, const std::string& text,
                         const std::string& subject, const std::string& origin) {
  const std::lock_guard lock(m_mutex);
  int index = 0;
  m_insert->bind(++index, static_cast<std::int64_t>(time));
  for (const int number : {facility, severity, eventClass, eventCode, failure ? 1 : 0}) {
    m_insert->bind(++index, static_cast<std::int64_t>(number));
  }
  const std::array<std::string, 3> words = {clippedText(text, kLongestText),
                                            clippedText(subject, kLongestText),
                                            clippedText(origin, kLongestText)};
  for (const std::string& word : words) m_insert->bind(++index, word);
  const bool written = m_insert->run();
  if (!written && !m_failing) m_database->logFailure("writing");
  m_failing = !written;
}

std::vector<SecurityRecord> SecurityLog::list(std::int64_t after, std::size_t most) {
  const std::lock_guard lock(m_mutex);
  std::vector<SecurityRecord> records;
  const auto bound = std::min(most, static_cast<std::size_t>(kBound));
  m_list->bind(1, after);
  m_list->bind(2, static_cast<std::int64_t>(bound));
  while (m_list->next()) records.push_back(recordOf(*m_list));
  if (m_list->failed()) m_database->logFailure("reading");
  m_list->reset();
  return records;
}

SecurityLog::Kept SecurityLog::kept() {
  const std::lock_guard lock(m_mutex);
  Kept kept;
  // An empty log has one row, of two nulls: 0.
  if (m_kept->next() && m_kept->number(0) > 0) kept = {m_kept->number(0), m_kept->number(1)};
  if (m_kept->failed()) m_database->logFailure("reading");
  m_kept->reset();
  return kept;
}

}  // namespace host
