#pragma once

#include <ctime>
#include <string>

// The UTC string: an instant as 25 characters, a subset of ISO 8601 / RFC 3339,
// "%04d-%02d-%02dT%02d:%02d:%02d%c%02d:%02d", for example "2016-06-16T00:00:00+00:00".
// Thread: any.
class ClockUtils {
 public:
  // Parses exactly 25 characters: year 0000-9999, month, day of that month, hour 0-23, minute,
  // second 0-60, '+' or '-', offset up to 23:59. The offset is applied: `utc` then holds UTC, with
  // weekday and day of the year filled in and tm_isdst 0. False, and `utc` untouched, for anything
  // else.
  static bool convertTimeStringToTimeStruct(const std::string& text, tm& utc);

  // Writes the record (year since 1900, month 0-11) as a UTC string with offset "+00:00". Fields
  // are printed as they are; the record is not normalised.
  static void convertTimeStructToTimeString(tm& utc, std::string& text);
};
