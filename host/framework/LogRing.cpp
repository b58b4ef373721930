#include "framework/LogRing.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace host {
namespace {

// Before the texts, which follow in the order of their lengths.
struct Header {
  std::uint32_t size;  // of the whole entry
  std::uint32_t call;
  std::uint64_t number;
  std::int64_t wall;  // nanoseconds
  std::int32_t line;
  std::uint16_t text;
  std::uint16_t component;
  std::uint16_t file;
  std::uint16_t origin;
  std::uint8_t level;
  bool systemLog;
};
static_assert(sizeof(Header) == LogRing::kHeader);
static_assert(alignof(Header) == LogRing::kAlignment);

constexpr std::size_t aligned(std::size_t size) {
  return (size + LogRing::kAlignment - 1) / LogRing::kAlignment * LogRing::kAlignment;
}

std::uint16_t cut(std::string_view text, std::size_t most) {
  return static_cast<std::uint16_t>(std::min(text.size(), most));
}

const Header& headerAt(const char* place) {
  return *std::launder(static_cast<const Header*>(static_cast<const void*>(place)));
}

std::string take(std::string_view& bytes, std::size_t size) {
  std::string text(bytes.substr(0, size));
  bytes.remove_prefix(size);
  return text;
}

LogEntry entryIn(std::string_view bytes) {
  Header header;
  std::memcpy(&header, bytes.data(), sizeof header);
  bytes.remove_prefix(sizeof header);
  LogEntry entry;
  entry.number = header.number;
  entry.wall = std::chrono::nanoseconds(header.wall);
  entry.level = header.level;
  entry.line = header.line;
  entry.systemLog = header.systemLog;
  entry.call = header.call;
  entry.text = take(bytes, header.text);
  entry.component = take(bytes, header.component);
  entry.file = take(bytes, header.file);
  entry.origin = take(bytes, header.origin);
  return entry;
}

}  // namespace

// The header is built in its place: copying it would wait for the processor to write its members.
void LogRing::add(const LogEntryView& entry) noexcept {
  const std::uint16_t text = cut(entry.text, kLongestText);
  const std::uint16_t component = cut(entry.component, kLongestName);
  const std::uint16_t file = cut(entry.file, kLongestName);
  const std::uint16_t origin = cut(entry.origin, kLongestName);
  const std::size_t size = aligned(kHeader + text + component + file + origin);
  makeRoom(size);
  const std::size_t next = m_next + size;
  char* to = m_memory.data() + m_next;
  new (to) Header{static_cast<std::uint32_t>(size),
                  entry.call,
                  entry.number,
                  entry.wall.count(),
                  entry.line,
                  text,
                  component,
                  file,
                  origin,
                  static_cast<std::uint8_t>(entry.level),
                  entry.systemLog};
  to += kHeader;
  for (const auto& [data, length] : {std::pair(entry.text.data(), text),
                                     {entry.component.data(), component},
                                     {entry.file.data(), file},
                                     {entry.origin.data(), origin}}) {
    if (length > 0) std::memcpy(to, data, length);
    to += length;
  }
  m_next = next < m_room ? next : 0;
}

void LogRing::makeRoom(std::size_t size) noexcept {
  while (m_count > 0 && m_first >= m_next && m_first < m_next + size) {
    m_first = placeAfter(m_first);
    --m_count;
  }
  if (m_count++ == 0) m_first = m_next;
}

std::size_t LogRing::placeAfter(std::size_t place) const noexcept {
  const std::size_t next = place + headerAt(m_memory.data() + place).size;
  return next < m_room ? next : 0;
}

std::string LogRing::bytes() const {
  std::string all;
  std::size_t place = m_first;
  for (std::size_t i = 0; i < m_count; ++i, place = placeAfter(place)) {
    const char* const entry = m_memory.data() + place;
    all.append(entry, headerAt(entry).size);
  }
  return all;
}

std::vector<LogEntry> LogRing::entriesIn(std::string_view bytes) {
  std::vector<LogEntry> entries;
  while (!bytes.empty()) {
    std::uint32_t size = 0;
    static_assert(offsetof(Header, size) == 0);
    std::memcpy(&size, bytes.data(), sizeof size);
    entries.push_back(entryIn(bytes));
    bytes.remove_prefix(size);
  }
  return entries;
}

}  // namespace host
