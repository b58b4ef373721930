#pragma once

#include <optional>
#include <string>

// The management layer's own forms of time and date, with four-digit years. Pure.
namespace SimpleDateText {

struct Date {
  int day;
  int month;
  int year;
};

// "05.03.2024", "2024-03-05" or "03/05/2024" for dateFormat 0, 1, 2; nothing for any other.
std::optional<std::string> print(const Date& date, int dateFormat);

// Reads the same forms by position, ignoring the separators; each piece is read as strtol does. All
// zero for an unknown format.
// Throws std::out_of_range when the text ends before a piece begins.
Date cut(const std::string& text, int dateFormat);

// "09:07".
std::string printTime(int hours, int minutes);

// The number at `position`, `length` characters wide, as strtol reads it in base 10.
// Throws std::out_of_range when the text ends before `position`.
int numberAt(const std::string& text, std::size_t position, std::size_t length);

}  // namespace SimpleDateText
