#include "services/History.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

#include "Logging.h"
#include "base/Descriptor.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "base/PrintableText.h"
#include "framework/OwnerOnly.h"
#include "services/DamagedName.h"

namespace host {
namespace {

// On disk: the file's first line. A change is a line of its members, separated by tabs.
constexpr std::string_view kHeader = "clock history 1\n";

// The file is damaged. Caught in this source.
struct DamagedHistory {
  std::string reason;
};

// Pointers to the texts of a change, in the order of the file.
constexpr std::array kTexts = {&Change::what, &Change::cause, &Change::who, &Change::from,
                               &Change::to};

std::string lineOf(const Change& change) {
  std::string line = std::to_string(change.time.count());
  for (const auto text : kTexts) line += '\t' + change.*text;
  return line + '\n';
}

// False: not a line of a change.
bool read(std::string_view line, Change& change) {
  std::int64_t seconds = 0;
  const char* const end = line.data() + line.size();
  const auto [stop, error] = std::from_chars(line.data(), end, seconds);
  if (error != std::errc()) return false;
  change.time = std::chrono::seconds(seconds);
  line.remove_prefix(static_cast<std::size_t>(stop - line.data()));
  for (const auto text : kTexts) {
    if (!line.starts_with('\t')) return false;
    line.remove_prefix(1);
    change.*text = line.substr(0, line.find('\t'));
    line.remove_prefix((change.*text).size());
  }
  return line.empty();
}

// All changes of the file's text. whole: whether its last line is complete; a power cut may clip
// it.
std::vector<Change> changesIn(std::string_view text, bool& whole) {
  std::vector<Change> changes;
  whole = text.empty() || text.ends_with('\n');
  if (text.empty()) return changes;
  if (!text.starts_with(kHeader))
    throw DamagedHistory{"it does not begin with \"clock history 1\""};
  text = text.substr(kHeader.size(), text.rfind('\n') + 1 - kHeader.size());
  for (std::size_t number = 2; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    Change change;
    if (!read(text.substr(0, end), change)) throw DamagedHistory{"line " + std::to_string(number)};
    changes.push_back(std::move(change));
    text.remove_prefix(end + 1);
  }
  return changes;
}

[[noreturn]] void fail(const std::string& file, const char* what) {
  throw Error("history \"" + file + "\" cannot be " + what + ": " + std::strerror(errno));
}

// All that can be read; after a read error bad() is true.
std::string textOf(std::istream& file) {
  std::string text;
  std::array<char, 8192> part;
  while (file) {
    file.read(part.data(), part.size());
    text.append(part.data(), static_cast<std::size_t>(file.gcount()));
  }
  return text;
}

// Creates a missing file. On failure restores the former length. Throws Error.
void writeText(const std::string& file, std::string text, int flags, bool sync) {
  const Descriptor out(
      ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | flags, S_IRUSR | S_IWUSR));
  struct stat status {};
  if (!out.valid() || ::fstat(out.get(), &status) != 0) fail(file, "written");
  if (status.st_size == 0) text.insert(0, kHeader);
  errno = ENOSPC;  // of a write of less than all
  if (::write(out.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
      (sync && ::fdatasync(out.get()) != 0)) {
    const int why = errno;
    if (::ftruncate(out.get(), status.st_size) != 0) errno = why;  // the next reader repairs it
    errno = why;
    fail(file, "written");
  }
}

}  // namespace

History::~History() {
  write();
}

void History::add(Change change) {
  for (const auto text : kTexts)
    change.*text = clippedText(escapedLine(change.*text), kLongestText);
  const MutexLock lock(m_mutex);
  m_waiting.push_back(std::move(change));
  if (m_waiting.size() > kKept) m_waiting.pop_front();
  if (!m_later || m_expectsWrite) return;
  m_later();
  m_expectsWrite = true;
}

void History::writeWith(std::function<void()> later) {
  const MutexLock lock(m_mutex);
  m_later = std::move(later);
}

void History::write() {
  const MutexLock lock(m_fileMutex);
  writeWaiting();
}

// A task that m_later() asked for may be lost, so the next change asks again.
void History::takeWaiting() {
  const MutexLock lock(m_mutex);
  m_expectsWrite = false;
  if (m_taken.empty()) return m_taken.swap(m_waiting);
  for (; !m_waiting.empty(); m_waiting.pop_front()) m_taken.push_back(std::move(m_waiting.front()));
  while (m_taken.size() > kKept) m_taken.pop_front();
}

std::vector<Change> History::list(std::size_t most) {
  const MutexLock lock(m_fileMutex);
  writeWaiting();
  std::vector<Change> changes;
  if (!m_file.empty()) changes = read();
  changes.insert(changes.end(), m_taken.begin(), m_taken.end());
  most = std::min({most, kKept, changes.size()});
  changes.erase(changes.begin(), changes.end() - static_cast<std::ptrdiff_t>(most));
  return changes;
}

void History::writeWaiting() try {
  takeWaiting();
  if (m_file.empty() || m_taken.empty()) return;
  if (!m_inFile) m_inFile = read().size();
  append();
  if (*m_inFile > 2 * kKept) shorten(read());
} catch (const std::exception& error) {
  if (!m_failed) logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "%s", error.what());
  m_failed = true;
  m_inFile.reset();
}

void History::append() {
  std::string lines;
  for (const Change& change : m_taken) lines += lineOf(change);
  writeText(m_file, lines, O_APPEND | O_NONBLOCK, false);
  *m_inFile += m_taken.size();
  m_taken.clear();
  m_failed = false;
}

// Empty when there is no file. Sets a damaged one aside.
std::vector<Change> History::read() try {
  tightenFile(m_file);
  std::ifstream file(m_file, std::ios::binary);
  if (!file && errno == ENOENT) return {};
  if (!file) fail(m_file, "read");
  const std::string text = textOf(file);
  if (file.bad()) fail(m_file, "read");
  bool whole = false;
  std::vector<Change> changes = changesIn(text, whole);
  if (!whole) {
    logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
              "history \"%s\" ended within a line: that change is lost", m_file.c_str());
    shorten(changes);
  }
  return changes;
} catch (const DamagedHistory& damage) {
  setAside(damage.reason);
  return {};
}

// Replaces the file by one with the newest kKept of its changes. Synced, so that a power cut loses
// the latest changes and not all.
void History::shorten(const std::vector<Change>& changes) {
  const std::size_t kept = std::min(changes.size(), kKept);
  std::string lines;
  for (std::size_t i = changes.size() - kept; i < changes.size(); ++i) lines += lineOf(changes[i]);
  const std::string shorter = m_file + ".new";
  ::unlink(shorter.c_str());
  writeText(shorter, lines, O_EXCL, true);
  if (std::rename(shorter.c_str(), m_file.c_str()) != 0) fail(m_file, "replaced");
  m_inFile = kept;
}

void History::setAside(const std::string& reason) {
  const std::string name = damagedName(m_file);
  if (std::rename(m_file.c_str(), name.c_str()) != 0) fail(m_file, "set aside");
  m_inFile = 0;
  logAppUni("clockhost", kLogError, __FILE__, __LINE__,
            "history \"%s\" is damaged (%s): set aside as \"%s\", starting with an empty one",
            m_file.c_str(), reason.c_str(), name.c_str());
}

}  // namespace host
