#include "framework/LogRing.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace host {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kHeader = LogRing::kHeader;

// A ring with memory for entries of `Room` bytes, and guards around it that it must not touch.
template <std::size_t Room>
class GuardedRing {
 public:
  GuardedRing() { m_bytes.fill('#'); }
  ~GuardedRing() {
    EXPECT_EQ(std::string(m_bytes.data(), kGuard), std::string(kGuard, '#'));
    EXPECT_EQ(std::string(m_bytes.data() + kGuard + kSize, kGuard), std::string(kGuard, '#'));
  }
  GuardedRing(const GuardedRing&) = delete;
  GuardedRing& operator=(const GuardedRing&) = delete;

  void add(std::uint64_t number, std::string_view text) {
    m_ring.add({.number = number, .text = text});
  }
  LogRing* operator->() { return &m_ring; }
  [[nodiscard]] std::vector<LogEntry> entries() const { return LogRing::entriesIn(m_ring.bytes()); }

  // "1:a 2:b"
  [[nodiscard]] std::string kept() const {
    std::string all;
    for (const LogEntry& entry : entries()) {
      all += (all.empty() ? "" : " ") + std::to_string(entry.number) + ':' + entry.text;
    }
    return all;
  }

 private:
  static constexpr std::size_t kGuard = 64;
  static constexpr std::size_t kSize = Room + LogRing::kLongestEntry;
  alignas(LogRing::kAlignment) std::array<char, kSize + 2 * kGuard> m_bytes;
  LogRing m_ring{{m_bytes.data() + kGuard, kSize}};
};

TEST(LogRing, KeepsAllMembersOfAnEntry) {
  GuardedRing<1> ring;
  const LogEntryView entry = {.number = 1ULL << 40,
                              .wall = 8'000'000'000s + 1ns,
                              .level = 6,
                              .component = "Part",
                              .file = "src/file.cpp",
                              .line = 123'456,
                              .text = std::string_view("a\0\xff\n", 4),
                              .systemLog = true,
                              .origin = "uid 0, pid 7",
                              .call = 0xFFFFFFFF};
  ring->add(entry);
  ASSERT_EQ(ring.entries().size(), 1U);
  const LogEntry kept = ring.entries().front();
  EXPECT_EQ(kept.number, entry.number);
  EXPECT_EQ(kept.wall, entry.wall);
  EXPECT_EQ(kept.level, entry.level);
  EXPECT_EQ(kept.component, entry.component);
  EXPECT_EQ(kept.file, entry.file);
  EXPECT_EQ(kept.line, entry.line);
  EXPECT_EQ(kept.text, entry.text);
  EXPECT_EQ(kept.systemLog, entry.systemLog);
  EXPECT_EQ(kept.origin, entry.origin);
  EXPECT_EQ(kept.call, entry.call);
}

TEST(LogRing, KeepsAnEntryWithoutTexts) {
  GuardedRing<1> ring;
  EXPECT_EQ(ring.kept(), "");
  ring->add({});
  EXPECT_EQ(ring.kept(), "0:");
  ring.add(2, "");
  EXPECT_EQ(ring.kept(), "2:") << "in place of the first, which used all memory";
  ring->clear();
  EXPECT_EQ(ring.kept(), "");
  ring.add(3, "x");
  EXPECT_EQ(ring.kept(), "3:x");
}

// The longest entry takes all memory, also when it begins at the last place.
TEST(LogRing, CutsTextsThatAreTooLong) {
  GuardedRing<kHeader + 1> ring;
  const std::string name(LogRing::kLongestName, 'n');
  const std::string text(LogRing::kLongestText, 't');
  for (const std::size_t more : {std::size_t{0}, std::size_t{1}, std::size_t{70'000}}) {
    const std::string longName = name + std::string(more, 'x');
    const std::string longText = text + std::string(more, 'x');
    ring.add(1, "");
    ring->add({.component = longName, .file = longName, .text = longText, .origin = longName});
    const LogEntry kept = ring.entries().back();
    EXPECT_EQ(kept.component, name);
    EXPECT_EQ(kept.file, name);
    EXPECT_EQ(kept.origin, name);
    EXPECT_EQ(kept.text, text);
  }
}

TEST(LogRing, OverwritesTheOldestEntriesOneByOne) {
  GuardedRing<3 * kHeader> ring;
  ring.add(1, "");
  ring.add(2, "");
  ring.add(3, "abc");
  EXPECT_EQ(ring.kept(), "1: 2: 3:abc");
  ring.add(4, "");
  EXPECT_EQ(ring.kept(), "2: 3:abc 4:");
  ring.add(5, "x");
  EXPECT_EQ(ring.kept(), "4: 5:x") << "a byte more than the place of the oldest";
  ring.add(6, std::string(300, 'y'));
  EXPECT_EQ(ring.kept(), "4: 5:x 6:" + std::string(300, 'y')) << "longer than the rest";
  ring.add(7, "z");
  EXPECT_EQ(ring.kept(), "6:" + std::string(300, 'y') + " 7:z");
}

// Entries of all lengths begin and end at each place.
TEST(LogRing, KeepsTheNewestOfMany) {
  constexpr std::size_t kRoom = 1000;
  constexpr std::size_t kLengths = 91;
  GuardedRing<kRoom> ring;
  const auto textOf = [](std::uint64_t number) {
    return std::string(static_cast<std::size_t>(number * 7 % kLengths), 'x');
  };
  for (std::uint64_t number = 1; number <= 3000; ++number) {
    ring.add(number, textOf(number));
    const std::vector<LogEntry> entries = ring.entries();
    std::size_t bytes = 0;
    std::uint64_t next = number - entries.size() + 1;
    for (const LogEntry& entry : entries) {
      ASSERT_EQ(entry.number, next++);
      ASSERT_EQ(entry.text, textOf(entry.number));
      bytes += kHeader + (entry.text.size() + 7) / 8 * 8;
    }
    ASSERT_EQ(next, number + 1);
    ASSERT_TRUE(number == entries.size() || bytes + 2 * (kHeader + kLengths) > kRoom);
  }
}

}  // namespace
}  // namespace host
