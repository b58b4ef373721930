// The offset from UTC in ClockServiceDataHandler: its text, its two units, its limits.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <string>

#include "ClockServiceDataHandler.h"
#include "unit/SettingsInMemory.h"

namespace {

using namespace std::string_literals;
using unit::SettingsInMemory;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(TimezoneOffset, NumberUpToTwelveAndAHalfIsHoursAndALargerOneSeconds) {
  const struct {
    float given;
    float hours;
    const char* text;
  } table[] = {{1.0F, 1.0F, "1"},
               {5.5F, 5.5F, "5.5"},
               {-3.5F, -3.5F, "-3.5"},
               {5.75F, 5.75F, "5.75"},
               {12.5F, 12.5F, "12.5"},
               {-12.5F, -12.5F, "-12.5"},
               {0.25F, 0.25F, "0.25"},
               {-0.5F, -0.5F, "-0.5"},
               {1e-7F, 1e-7F, "1e-07"},
               {-10.0F, -10.0F, "-10"},
               {12.75F, 12.75F / 3600.0F, "0.00354167"},
               {-12.75F, -12.75F / 3600.0F, "-0.00354167"},
               {std::nextafter(12.5F, 13.0F), 12.500001F / 3600.0F, "0.00347222"},
               {std::nextafter(-12.5F, -13.0F), -12.500001F / 3600.0F, "-0.00347222"},
               {90.0F, 0.025F, "0.025"},
               {7200.0F, 2.0F, "2"},
               {-18000.0F, -5.0F, "-5"},
               {45000.0F, 12.5F, "12.5"},
               {50400.0F, 14.0F, "14"},
               {1e30F, 1e30F / 3600.0F, "2.77778e+26"},
               {kInfinity, kInfinity, "inf"},
               {-kInfinity, -kInfinity, "-inf"}};
  for (const auto& row : table) {
    SettingsInMemory store;
    const auto settings = store.load();
    EXPECT_TRUE(settings->setTimezoneOffset(row.given)) << row.given;
    EXPECT_EQ(settings->getTimezoneOffset(), row.hours) << row.given;
    EXPECT_EQ(settings->getTimezoneOffsetStr(), row.text) << row.given;
    EXPECT_EQ(store.stored("TimezoneOffset"), row.text) << row.given;
  }
}

TEST(TimezoneOffset, NotANumberIsStoredUnchanged) {
  SettingsInMemory store;
  const auto settings = store.load();
  EXPECT_TRUE(settings->setTimezoneOffset(std::numeric_limits<float>::quiet_NaN()));
  EXPECT_TRUE(std::isnan(settings->getTimezoneOffset()));
  EXPECT_EQ(settings->getTimezoneOffsetStr(), "nan");
  EXPECT_TRUE(std::isnan(store.load()->getTimezoneOffset()));
}

TEST(TimezoneOffset, UnchangedValueIsAcceptedAndNotWritten) {
  SettingsInMemory store;
  const auto settings = store.load();
  store.refuseWrites(1);
  EXPECT_TRUE(settings->setTimezoneOffset(0.0F));
  EXPECT_TRUE(settings->setTimezoneOffset(-0.0F));
  EXPECT_EQ(store.writes(), 0U);
  EXPECT_FALSE(settings->setTimezoneOffset(2.0F));  // the write that is refused
  EXPECT_EQ(settings->getTimezoneOffset(), 0.0F);
  EXPECT_TRUE(settings->setTimezoneOffset(5.5F));
  EXPECT_TRUE(settings->setTimezoneOffset(5.5F));
  EXPECT_TRUE(settings->setTimezoneOffset(19800.0F));  // the same in seconds
  EXPECT_EQ(store.writes(), 2U);
  EXPECT_TRUE(settings->setTimezoneOffset(std::nextafter(5.5F, 6.0F)));  // has the same text
  EXPECT_EQ(store.writes(), 3U);
}

TEST(TimezoneOffset, TextHasAPointUnderAnyLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  const auto before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  SettingsInMemory store;
  EXPECT_TRUE(store.load()->setTimezoneOffset(5.5F));
  std::locale::global(before);
  EXPECT_EQ(store.stored("TimezoneOffset"), "5.5");
}

TEST(TimezoneOffset, TextIsReadUpToTheFirstOtherCharacter) {
  const struct {
    std::string text;
    float hours;
  } table[] = {{"5.5", 5.5F},
               {"-3.5", -3.5F},
               {"+1", 1.0F},
               {"7200", 2.0F},
               {"  2", 2.0F},
               {"\t\n3", 3.0F},
               {"4 hours", 4.0F},
               {"4,5", 4.0F},
               {"1e1", 10.0F},
               {"0x8", 8.0F},
               {"12.5", 12.5F},
               {"-12.5", -12.5F},
               {"-18000", -5.0F},
               {"inf", kInfinity},
               {"-inf", -kInfinity},
               {"1e300", kInfinity},
               {"1e999", kInfinity},
               {".5", 0.5F},
               {"-1e300", -kInfinity},
               {"5.", 5.0F},
               {"hours", 0.0F},
               {" ", 0.0F},
               {"-", 0.0F},
               {"+", 0.0F},
               {".", 0.0F},
               {"e5", 0.0F},
               {"\xff", 0.0F},
               {"9\xff", 9.0F},
               {"12\0 34"s, 12.0F},
               {std::string(std::size_t{1024} * 1024, '9'), kInfinity}};
  for (const auto& row : table) {
    SettingsInMemory store;
    const auto settings = store.load();
    EXPECT_TRUE(settings->setTimezoneOffset(1.25F));
    std::string reason = "old";
    EXPECT_TRUE(settings->setTimezoneOffset(row.text, reason)) << "\"" << row.text << "\"";
    EXPECT_EQ(settings->getTimezoneOffset(), row.hours) << "\"" << row.text << "\"";
    EXPECT_EQ(reason, "old") << "\"" << row.text << "\"";
    EXPECT_EQ(store.writes(), 2U) << "\"" << row.text << "\"";
  }
}

TEST(TimezoneOffset, EmptyTextIsRefusedWithAReason) {
  SettingsInMemory store;
  const auto settings = store.load();
  EXPECT_TRUE(settings->setTimezoneOffset(1.0F));
  std::string reason;
  EXPECT_FALSE(settings->setTimezoneOffset("", reason));
  EXPECT_EQ(reason, "Timezone offset cannot be blank");
  EXPECT_EQ(settings->getTimezoneOffset(), 1.0F);
  EXPECT_EQ(store.writes(), 1U);
}

// A stored number is always hours.
TEST(TimezoneOffset, StoredTextIsLoaded) {
  const struct {
    const char* text;
    float hours;
  } table[] = {{"5.75", 5.75F}, {"-5", -5.0F}, {"14", 14.0F},      {"19800", 19800.0F},
               {"", 0.0F},      {"x", 0.0F},   {"inf", kInfinity}, {"1e300", kInfinity}};
  for (const auto& row : table) {
    SettingsInMemory store;
    store.put("TimezoneOffset", row.text);
    EXPECT_EQ(store.load()->getTimezoneOffset(), row.hours) << "\"" << row.text << "\"";
  }
}

}  // namespace
