// Arbitrary bytes, up to a megabyte, as key and as value: each is refused or converted as the key
// documents, and the clock keeps answering.

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "ClockService/ManagedKeys.h"
#include "ManageableData.h"
#include "plugin/ManagedClock.h"

namespace {

using namespace std::string_literals;

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;
constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

// A text from outside, and how the keys read it.
struct OutsideText {
  const char* name;
  std::string text;
  bool storable;       // as it is: the store refuses what XML cannot carry
  int number;          // that it begins with
  const char* offset;  // that it is as a number of hours; null: refused
};

std::string everyByte() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

const std::vector<OutsideText>& outsideTexts() {
  static const std::vector<OutsideText> rows{
      {"nothing", "", true, 0, nullptr},
      {"NUL", "\0"s, false, 0, "0"},
      {"a number and NUL", "12\0 34"s, false, 12, "12"},
      {"0xFF", "\xff", false, 0, "0"},
      {"a number and 0xFF", "9\xff", false, 9, "9"},
      {"a cut UTF-8 sequence", "\xc3", false, 0, "0"},
      {"UTF-8", "\xc3\xbc", true, 0, "0"},
      {"a newline", "\n", true, 0, "0"},
      {"a number in lines", "\n\r\t -6\n5", true, -6, "-6"},
      {"terminal control", "\x1b[31m", false, 0, "0"},
      {"DEL", "\x7f", true, 0, "0"},
      {"markup", "</Settings>&#0;", true, 0, "0"},
      {"print conversions", "%n%s%99999d", true, 0, "0"},
      {"every byte", everyByte(), false, 0, "0"},
      {"1 MiB of nines", std::string(kMebibyte, '9'), true, kHighest, "inf"},
      {"1 MiB of minus nines", "-" + std::string(kMebibyte, '9'), true, kLowest, "-inf"},
      {"1 MiB of zeros and 7", std::string(kMebibyte, '0') + "7", true, 7, "7"},
      {"1 MiB of blanks and 8", std::string(kMebibyte, ' ') + "8", true, 8, "8"},
      {"1 MiB of letters", std::string(kMebibyte, 'a'), true, 0, "0"},
      {"1 MiB of colons", std::string(kMebibyte, ':'), true, 0, "0"},
      {"1 MiB of newlines", std::string(kMebibyte, '\n'), true, 0, "0"},
      {"1 MiB of markup", std::string(kMebibyte, '&'), true, 0, "0"},
      {"1 MiB of NUL", std::string(kMebibyte, '\0'), false, 0, "0"},
      {"1 MiB of 0xFF", std::string(kMebibyte, '\xff'), false, 0, "0"},
  };
  return rows;
}

// It logs all it does.
class ClockUnderAnyBytes : public plugin::ManagedClock {
 protected:
  ClockUnderAnyBytes() : ManagedClock(6) {}

  // Sets, and expects the answer, the value afterwards, a record to the byte and a free lock.
  void expectSet(const char* key, const OutsideText& row, bool accepted, const std::string& shown) {
    const std::string before = telephone.managed(key);
    EXPECT_EQ(telephone.manage(key, row.text), accepted) << key << ": " << row.name;
    EXPECT_TRUE(telephone.managed(key) == (accepted ? shown : before)) << key << ": " << row.name;
    expectRecord(std::string(key) + "(" + row.text + ")", accepted, row.name);
    log.clear();
  }
  void expectRecord(const std::string& attempt, bool accepted, const char* name) {
    const auto records = telephone.security.records();
    ASSERT_FALSE(records.empty()) << name;
    EXPECT_TRUE(records.back().text == "ClockSettings set data " + attempt) << name;
    EXPECT_EQ(records.back().failure, !accepted) << name;
    telephone.security.clear();
  }
};

TEST_F(ClockUnderAnyBytes, ReadsTheirLeadingNumber) {
  for (const char* const key :
       {"date-format", "time-format", "daylight-save-minutes", "time-source"})
    for (const OutsideText& row : outsideTexts())
      expectSet(key, row, row.storable, std::to_string(row.number));
}

TEST_F(ClockUnderAnyBytes, ReadsTheirLeadingZone) {
  for (const char* const key : {"daylight-save-zone-index", "daylight-save-zone-id"})
    for (const OutsideText& row : outsideTexts())
      expectSet(key, row, row.number >= 0 && row.number <= 14, std::to_string(row.number));
}

TEST_F(ClockUnderAnyBytes, ReadsTheirLeadingOffset) {
  for (const OutsideText& row : outsideTexts())
    expectSet("sntp-tz-offset", row, row.offset != nullptr,
              row.offset != nullptr ? row.offset : "");
}

TEST_F(ClockUnderAnyBytes, KeepsAStorableSecretByteForByteOverARestart) {
  for (const OutsideText& row : outsideTexts()) {
    expectSet("ntp-secret", row, row.storable, row.text);
    if (!row.storable) continue;
    telephone.switchOff();
    telephone.switchOn();
    EXPECT_TRUE(telephone.managed("ntp-secret") == row.text) << row.name;
  }
}

TEST_F(ClockUnderAnyBytes, RefusesThemAsFlagAsAddressAndForReadOnlyKeys) {
  for (const char* const key : {"daylight-save", "auto-daylight-save", "sntp-addr",
                                "daylight-save-zone-list", "daylight-save-zone-text"})
    for (const OutsideText& row : outsideTexts()) expectSet(key, row, false, "");
  EXPECT_FALSE(telephone.manage("daylight-save", "true\0"s));
  EXPECT_FALSE(telephone.manage("sntp-addr", "192.0.2.1\0"s));
  EXPECT_FALSE(telephone.manage("sntp-addr", "192.0.2.1\n"));
}

TEST_F(ClockUnderAnyBytes, RefusesThemAsInstant) {
  for (const OutsideText& row : outsideTexts()) expectSet("time", row, false, "");
  EXPECT_FALSE(telephone.manage("time", "2030-12-31T23:30:15+00:00\0"s));
  EXPECT_FALSE(telephone.manage("time",
                                "2030-12-31T23:30:15\xff"
                                "00:00"));
  EXPECT_EQ(utc(), "2024-03-05T09:07:05+00:00");
}

TEST_F(ClockUnderAnyBytes, CutsATimeOfDayOutOfThemByPosition) {
  const std::pair<std::string, const char*> rows[] = {
      {"1\0:2\0"s, "01:02:00"},
      {"\xff"
       "7\n8 ",
       "00:08:00"},
      {"\n3\x01\t4" + std::string(kMebibyte, '9'), "03:04:00"},
      {std::string(kMebibyte, '\0'), "00:00:00"},
  };
  for (const auto& [text, time] : rows) {
    EXPECT_TRUE(telephone.manage("simple-time", text)) << time;
    EXPECT_EQ(utc(), "2024-03-05T"s + time + "+00:00");
  }
}

TEST_F(ClockUnderAnyBytes, CutsADateOutOfThemByPosition) {
  const std::pair<std::string, const char*> rows[] = {
      {"1\0\xff"
       "2\0\xff"
       "2025"s,
       "2025-02-01"},
      {"\n3\n\t4\n\t\v26" + std::string(kMebibyte, '9'), "2026-04-03"},
  };
  for (const auto& [text, date] : rows) {
    EXPECT_TRUE(telephone.manage("simple-date", text)) << date;
    EXPECT_EQ(utc(), date + "T09:07:05+00:00"s);
  }
  EXPECT_FALSE(telephone.manage("simple-date", std::string(kMebibyte, '9')));  // the year 9999
}

TEST_F(ClockUnderAnyBytes, SurvivesThemAsTimeOfDayAndAsDate) {
  for (const char* const format : {"0", "1", "2", "7"}) {
    ASSERT_TRUE(telephone.manage("date-format", format));
    for (const OutsideText& row : outsideTexts())
      for (const char* const key : {"simple-time", "simple-date"}) {
        telephone.manage(key, row.text);
        EXPECT_EQ(telephone.managed("time").size(), 25U) << key << ": " << row.name;
        EXPECT_EQ(telephone.physical.clockChanges().begun, telephone.physical.clockChanges().ended);
        log.clear();
      }
  }
}

TEST_F(ClockUnderAnyBytes, RefusesThemAsKeys) {
  for (const OutsideText& row : outsideTexts()) {
    EXPECT_EQ(telephone.managed(row.text), "(refused)") << row.name;
    EXPECT_FALSE(telephone.manage(row.text, row.text)) << row.name;
    expectRecord(row.text + "(" + row.text + ")", false, row.name);
    log.clear();
  }
}

TEST_F(ClockUnderAnyBytes, RefusesKeysWithExtraBytes) {
  for (const ManagedKeys::Row& row : ManagedKeys::rows())
    for (const std::string& more : {"\0"s, "\n"s, " "s, "\xff"s, std::string(kMebibyte, '-')}) {
      const std::string key = row.name;
      EXPECT_EQ(telephone.managed(key + more), "(refused)") << key;
      EXPECT_EQ(telephone.managed(more + key), "(refused)") << key;
      EXPECT_FALSE(telephone.manage(key + more, "1")) << key;
      log.clear();
    }
}

}  // namespace
