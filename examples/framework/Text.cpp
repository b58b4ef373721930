// Conversions of numbers, names, addresses and UTC strings.
#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <regex>

#include "ClientUtils.h"
#include "ClockUtils.h"
#include "NetHelper.h"
#include "RejectReason.h"

namespace {

constexpr std::size_t kUtcLength = 25;
constexpr std::size_t kSignAt = 19;
constexpr std::size_t kLongestHostname = 253;  // without the final dot
constexpr std::size_t kLongestAddress = 64;    // more than any address and port

}  // namespace

std::string ClientUtils::itos(int number) {
  return std::to_string(number);
}

int ClientUtils::stoi(const std::string& text) {
  using Limits = std::numeric_limits<int>;
  const long number = std::strtol(text.c_str(), nullptr, 10);
  return static_cast<int>(std::clamp<long>(number, Limits::min(), Limits::max()));
}

std::string ClientUtils::btos(bool value) {
  return value ? "true" : "false";
}

bool ClientUtils::stob(const std::string& text) {
  return text == "true";
}

bool ClientUtils::validGlobalHostname(const std::string& text) {
  static const std::regex name(
      "([[:alnum:]]([[:alnum:]-]{0,61}[[:alnum:]])?[.])*"
      "(?![[:digit:]]+[.]?$)[[:alnum:]]([[:alnum:]-]{0,61}[[:alnum:]])?[.]?");
  const std::size_t length = text.size() - (!text.empty() && text.back() == '.' ? 1 : 0);
  return length <= kLongestHostname && std::regex_match(text, name);
}

namespace {

bool isDay(int year, int month, int day) {
  constexpr std::array<int, 12> kDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  if (month < 1 || month > 12 || day < 1) return false;
  return day <= kDays[static_cast<std::size_t>(month) - 1] + (leap && month == 2 ? 1 : 0);
}

}  // namespace

// Also refuses years beyond time_t.
bool ClockUtils::convertTimeStringToTimeStruct(const std::string& text, tm& utc) {
  static const std::regex shape(
      "([0-9]{4})-([0-9]{2})-([0-9]{2})T([0-9]{2}):([0-9]{2}):([0-9]{2})[+-]([0-9]{2}):([0-9]{2})");
  std::smatch part;
  if (text.size() != kUtcLength || !std::regex_match(text, part, shape)) return false;
  const auto number = [&part](std::size_t i) { return std::atoi(part.str(i).c_str()); };
  if (!isDay(number(1), number(2), number(3))) return false;
  if (number(4) > 23 || number(5) > 59 || number(6) > 60 || number(7) > 23 || number(8) > 59)
    return false;
  const int offset = number(7) * 60 + number(8);
  tm record{};
  record.tm_year = number(1) - 1900;
  record.tm_mon = number(2) - 1;
  record.tm_mday = number(3);
  record.tm_hour = number(4);
  record.tm_min = number(5) + (text[kSignAt] == '+' ? -offset : offset);
  if (timegm(&record) == -1) return false;
  utc = record;
  utc.tm_sec = number(6);  // set last, so that a leap second stays 60
  return true;
}

void ClockUtils::convertTimeStructToTimeString(tm& utc, std::string& text) {
  std::array<char, 96> buffer{};  // the widest number takes 11 characters
  std::snprintf(buffer.data(), buffer.size(), "%04lld-%02lld-%02dT%02d:%02d:%02d+00:00",
                1900LL + utc.tm_year, 1LL + utc.tm_mon, utc.tm_mday, utc.tm_hour, utc.tm_min,
                utc.tm_sec);
  text = buffer.data();
}

// Numeric addresses only: without an NTP client no name is looked up.
bool NetHelper::dnsLookup(const char* name, char* buffer, int size, int family) {
  std::array<unsigned char, sizeof(in6_addr)> address{};
  for (const int candidate : {AF_INET, AF_INET6}) {
    if ((family == 0 || family == candidate) && inet_pton(candidate, name, address.data()) == 1) {
      return inet_ntop(candidate, address.data(), buffer,
                       static_cast<socklen_t>(std::max(size, 0))) != nullptr;
    }
  }
  return false;
}

int NetHelper::verifyIpAddress(const std::string& text, bool allowPort) {
  static const std::regex shape("(\\[([0-9A-Fa-f:.]*)\\]|([0-9.]*))(:[1-9][0-9]{0,4})?");
  std::array<unsigned char, sizeof(in6_addr)> address{};
  const auto is = [&address](int family, const std::string& numbers) {
    return inet_pton(family, numbers.c_str(), address.data()) == 1;
  };
  if (text.size() > kLongestAddress) return 0;
  if (is(AF_INET6, text)) return 1;
  std::smatch part;
  if (!std::regex_match(text, part, shape)) return 0;
  const std::string port = part.str(4);
  if (!port.empty() && (!allowPort || std::atoi(port.c_str() + 1) > 65535)) return 0;
  if (is(AF_INET6, part.str(2))) return 1;
  return is(AF_INET, part.str(3)) ? 2 : 0;
}

void setRejectReason(rejectReasons /*reason*/, std::string& text, const char* format, ...) {
  std::array<char, 256> buffer{};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  va_end(arguments);
  text = buffer.data();
}
