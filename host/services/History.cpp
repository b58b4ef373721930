#include "services/History.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "Logging.h"
#include "base/Descriptor.h"
#include "base/Error.h"
#include "base/LogLevels.h"
#include "base/PrintableText.h"
#include "base/WriteAll.h"
#include "framework/OwnerOnly.h"

namespace host {
namespace {

constexpr const char* kOlder = ".1";  // of the older file's name

// On disk: a file's first line. A change is a line of its members, separated by tabs.
constexpr std::string_view kHeader = "clock history 1";

// Pointers to the texts of a change, in the order of the file.
constexpr std::array kTexts = {&Change::what, &Change::cause, &Change::who, &Change::from,
                               &Change::to};

std::string lineOf(const Change& change) {
  std::string line = std::to_string(change.time.count());
  std::size_t size = line.size() + kTexts.size() + 1;
  for (const auto text : kTexts) size += (change.*text).size();
  line.reserve(size);
  for (const auto text : kTexts) (line += '\t') += change.*text;
  return line += '\n';
}

// Most texts stay as they are, without an allocation.
void keepShortLine(std::string& text) {
  if (isPlainLine(text) && text.size() <= History::kLongestText) return;
  text = clippedText(escapedLine(text), History::kLongestText);
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

[[noreturn]] void fail(const std::string& file, const char* what) {
  throw Error("history \"" + file + "\" cannot be " + what + ": " + std::strerror(errno));
}

// Adds the changes of the text and keeps the newest `most`.
void readChanges(std::istream& text, const std::string& file, std::size_t most,
                 std::deque<Change>& changes) {
  std::size_t damaged = 0;
  for (std::string line; std::getline(text, line);) {
    Change change;
    if (line == kHeader) continue;
    if (text.eof() || !read(line, change)) {
      ++damaged;
      continue;
    }
    changes.push_back(std::move(change));
    if (changes.size() > most) changes.pop_front();
  }
  if (text.bad()) fail(file, "read");
  if (damaged == 0) return;
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "history \"%s\" has damaged lines, which are left out: %zu", file.c_str(), damaged);
}

void readFile(const std::string& file, std::size_t most, std::deque<Change>& changes) {
  tightenFile(file);
  std::ifstream text(file, std::ios::binary);
  if (!text && errno == ENOENT) return;
  if (!text) fail(file, "read");
  readChanges(text, file, most, changes);
}

Descriptor openFile(const std::string& file) {
  Descriptor out(::open(file.c_str(),
                        O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                        S_IRUSR | S_IWUSR));
  if (!out.valid()) fail(file, "written");
  return out;
}

// The number of lines. Removes a last line that a power cut clipped.
std::size_t wholeLines(int out, const std::string& file) {
  std::array<char, 8192> part;
  std::size_t lines = 0;
  off_t size = 0;
  off_t whole = 0;
  ssize_t count = 0;
  for (; (count = ::read(out, part.data(), part.size())) > 0; size += count) {
    const std::string_view text(part.data(), static_cast<std::size_t>(count));
    const std::size_t end = text.rfind('\n') + 1;  // 0: no line ends here
    lines += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    if (end > 0) whole = size + static_cast<off_t>(end);
  }
  if (count < 0) fail(file, "read");
  if (whole == size) return lines;
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "history \"%s\" ended within a line: that change is lost", file.c_str());
  if (::ftruncate(out, whole) != 0) fail(file, "written");
  return lines;
}

// On failure restores the file's former length.
void writeText(int out, const std::string& file, std::string_view text, off_t former) {
  if (writeAll(out, text)) return;
  const int why = errno;
  if (::ftruncate(out, former) != 0) errno = why;  // the next write cuts the part off
  errno = why;
  fail(file, "written");
}

}  // namespace

History::~History() {
  write();
}

void History::Lines::add(std::string_view more, std::size_t added) {
  text += more;
  count += added;
  std::size_t dropped = 0;
  for (; count > kKept; --count) dropped = text.find('\n', dropped) + 1;
  text.erase(0, dropped);
}

void History::add(Change change) {
  for (const auto text : kTexts) keepShortLine(change.*text);
  const std::string line = lineOf(change);
  const MutexLock lock(m_mutex);
  m_waiting.add(line, 1);
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
  m_taken.add(m_waiting.text, m_waiting.count);
  m_waiting = {};
}

std::deque<Change> History::list(std::size_t most) {
  const MutexLock lock(m_fileMutex);
  writeWaiting();
  std::deque<Change> changes;
  if (!m_file.empty()) {
    readFile(m_file + kOlder, most, changes);
    readFile(m_file, most, changes);
  }
  std::istringstream waiting(m_taken.text);
  readChanges(waiting, m_file, most, changes);
  return changes;
}

void History::writeWaiting() try {
  takeWaiting();
  if (m_file.empty() || m_taken.count == 0) return;
  append();
  m_failed = false;
} catch (const std::exception& error) {
  if (!m_failed) logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "%s", error.what());
  m_failed = true;
  m_inFile.reset();
}

// Begins a new file when the present one is full.
void History::append() {
  tightenFile(m_file);
  Descriptor out = openFile(m_file);
  if (!m_inFile) m_inFile = wholeLines(out.get(), m_file);
  if (*m_inFile > kKept) {
    if (std::rename(m_file.c_str(), (m_file + kOlder).c_str()) != 0) fail(m_file, "renamed");
    out = openFile(m_file);
  }
  struct stat status {};
  if (::fstat(out.get(), &status) != 0) fail(m_file, "written");
  if (status.st_size == 0) m_inFile = 1;
  const std::string header = status.st_size == 0 ? std::string(kHeader) + '\n' : "";
  writeText(out.get(), m_file, header + m_taken.text, status.st_size);
  *m_inFile += m_taken.count;
  m_taken = {};
}

}  // namespace host
