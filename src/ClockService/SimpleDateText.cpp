#include "SimpleDateText.h"

#include <array>
#include <cstddef>
#include <cstdlib>

#include "ClientUtils.h"
#include "Saturate.h"

namespace {

std::string padded(int number, const char* zeros) {
  return zeros + ClientUtils::itos(number);
}

std::string twoDigits(int number) {
  return padded(number, number < 10 ? "0" : "");
}

std::string fourDigits(int year) {
  if (year <= 9) return padded(year, "000");
  if (year <= 99) return padded(year, "00");
  return padded(year, year < 1000 ? "0" : "");
}

// Where the pieces of each format begin; a day and a month are two characters wide, a year four.
struct Layout {
  std::size_t day;
  std::size_t month;
  std::size_t year;
};
constexpr std::array<Layout, 3> kLayouts{{{0, 3, 6}, {8, 5, 0}, {3, 0, 6}}};

const Layout* layoutOf(int dateFormat) {
  const auto index = static_cast<std::size_t>(static_cast<unsigned int>(dateFormat));
  return index < kLayouts.size() ? &kLayouts[index] : nullptr;
}

}  // namespace

std::optional<std::string> SimpleDateText::print(const Date& date, int dateFormat) {
  const std::string day = twoDigits(date.day);
  const std::string month = twoDigits(date.month);
  const std::string year = fourDigits(date.year);
  switch (dateFormat) {
    case 0:
      return day + "." + month + "." + year;
    case 1:
      return year + "-" + month + "-" + day;
    case 2:
      return month + "/" + day + "/" + year;
    default:
      return std::nullopt;
  }
}

SimpleDateText::Date SimpleDateText::cut(const std::string& text, int dateFormat) {
  const Layout* const layout = layoutOf(dateFormat);
  if (layout == nullptr) return {0, 0, 0};
  return {numberAt(text, layout->day, 2), numberAt(text, layout->month, 2),
          numberAt(text, layout->year, 4)};
}

std::string SimpleDateText::printTime(int hours, int minutes) {
  return twoDigits(hours) + ":" + twoDigits(minutes);
}

int SimpleDateText::numberAt(const std::string& text, std::size_t position, std::size_t length) {
  return saturate<int>(std::strtol(text.substr(position, length).c_str(), nullptr, 10));
}
