#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "framework/LogEntry.h"

namespace host {

// The newest entries of a log, in memory of a fixed size: each is a header and its texts, one after
// the other. A new entry overwrites the oldest ones. Adding allocates nothing.
// Owner: the log, which also owns the memory. Thread: one at a time. Failure: longer names and
// texts than below are cut.
class LogRing {
 public:
  static constexpr std::size_t kLongestName = 255;   // bytes of component, file and origin
  static constexpr std::size_t kLongestText = 1100;  // bytes
  static constexpr std::size_t kHeader = 40;         // bytes of an entry besides its texts
  static constexpr std::size_t kAlignment = 8;
  static constexpr std::size_t kLongestEntry =
      kHeader + 3 * kLongestName + kLongestText + kAlignment;

  // REQUIRES: memory of more than kLongestEntry bytes, with kAlignment.
  explicit constexpr LogRing(std::span<char> memory)
      : m_memory(memory), m_room(memory.size() - kLongestEntry) {}

  void add(const LogEntryView& entry) noexcept;
  void clear() noexcept { m_count = 0; }

  // The kept entries, oldest first, as they are in the memory: quicker to copy than entriesIn().
  [[nodiscard]] std::string bytes() const;
  [[nodiscard]] static std::vector<LogEntry> entriesIn(std::string_view bytes);

 private:
  void makeRoom(std::size_t size) noexcept;
  [[nodiscard]] std::size_t placeAfter(std::size_t place) const noexcept;

  const std::span<char> m_memory;
  const std::size_t m_room;  // entries begin before it, and may end behind it
  std::size_t m_first = 0;   // place of the oldest entry
  std::size_t m_next = 0;    // place of the next entry
  std::size_t m_count = 0;
};

}  // namespace host
