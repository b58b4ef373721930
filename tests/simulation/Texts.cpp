#include "simulation/Texts.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <limits>

namespace simulation {
namespace {

// The value of a letter that a mask repeats `width` times.
std::string field(const tm& reading, char letter, int width) {
  const int year = reading.tm_year + 1900;
  if (letter == 'd') return print("%02d", reading.tm_mday);
  if (letter == 'm') return print("%02d", reading.tm_mon + 1);
  if (letter == 'y') return width == 2 ? print("%02d", year % 100) : print("%04d", year);
  return std::string(static_cast<std::size_t>(width), letter);
}

// Whether two records have the same date and time.
bool same(const tm& a, const tm& b) {
  return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday &&
         a.tm_hour == b.tm_hour && a.tm_min == b.tm_min;
}

// Whether the text has a digit for each 0 of the mask, a sign for each +, and else its characters.
bool matchesMask(const std::string& text, const std::string& mask) {
  return text.size() == mask.size() &&
         std::equal(text.begin(), text.end(), mask.begin(), [](char c, char wanted) {
           if (wanted == '0') return c >= '0' && c <= '9';
           return wanted == '+' ? c == '+' || c == '-' : c == wanted;
         });
}

}  // namespace

std::string print(const char* format, ...) {
  std::array<char, 2048> buffer{};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  va_end(arguments);
  return buffer.data();
}

std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> all(1);
  for (const char c : text) {
    if (c == '|') {
      all.emplace_back();
    } else {
      all.back() += c;
    }
  }
  return all;
}

tm localAt(std::int64_t instant) {
  const time_t seconds = instant;
  tm reading{};
  localtime_r(&seconds, &reading);
  return reading;
}

// Midnight is hour 00, not 12.
std::string timeText(const tm& reading, int format) {
  std::array<char, 6> text{};
  std::strftime(text.data(), text.size(), format == 0 ? "%R" : "%I:%M", &reading);
  if (format == 0) return text.data();
  const std::string hour = reading.tm_hour == 0 ? "00" : std::string(text.data(), 2);
  return hour + &text[2] + (reading.tm_hour < 12 ? "am" : "pm");
}

std::string dateText(const tm& reading, const std::string& mask) {
  std::string text;
  for (std::size_t at = 0, end = 0; at < mask.size(); at = end) {
    end = std::min(mask.find_first_not_of(mask[at], at), mask.size());
    text += field(reading, mask[at], static_cast<int>(end - at));
  }
  return text;
}

int maskedNumber(const std::string& text, const std::string& mask, char letter) {
  const std::size_t width = static_cast<std::size_t>(std::count(mask.begin(), mask.end(), letter));
  return leadingNumber(text.substr(mask.find(letter), width));
}

std::string utcText(std::int64_t instant) {
  const time_t seconds = instant;
  tm utc{};
  gmtime_r(&seconds, &utc);
  std::array<char, 40> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%FT%T+00:00", &utc)};
}

// A date that timegm changes does not exist.
std::optional<std::int64_t> instantOf(const std::string& utc) {
  if (!matchesMask(utc, "0000-00-00T00:00:00+00:00")) return std::nullopt;
  const auto number = [&utc](char letter) {
    return maskedNumber(utc, "yyyy-mm-ddTHH:MM:SS+hh:nn", letter);
  };
  tm asked{};
  asked.tm_year = number('y') - 1900;
  asked.tm_mon = number('m') - 1;
  asked.tm_mday = number('d');
  asked.tm_hour = number('H');
  asked.tm_min = number('M');
  tm normal = asked;
  const std::int64_t instant = timegm(&normal) + number('S');
  if (!same(asked, normal) || number('S') > 60 || number('h') > 23 || number('n') > 59)
    return std::nullopt;
  const int offset = (number('h') * 60 + number('n')) * 60;
  return utc[19] == '-' ? instant + offset : instant - offset;
}

int leadingNumber(const std::string& text) {
  long long number = 0;
  if (std::sscanf(text.c_str(), "%18lld", &number) != 1) return 0;
  return within32(number);
}

int within32(std::int64_t number) {
  return static_cast<int>(std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(),
                                                   std::numeric_limits<int>::max()));
}

std::int64_t floorSeconds(std::int64_t milliseconds) {
  return milliseconds / 1000 - (milliseconds % 1000 < 0 ? 1 : 0);
}

}  // namespace simulation
