#include "NtpRestart.h"

#include <cstddef>
#include <string_view>

namespace {

constexpr std::size_t kMacLength = 12;
constexpr std::size_t kFirstSeedDigit = 6;

int hexadecimal(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

}  // namespace

NtpRestart::MacText NtpRestart::seedOf(const char* text, int& seed) {
  seed = 0;
  const std::string_view mac = text != nullptr ? text : std::string_view();
  if (mac.size() != kMacLength) return MacText::wrongLength;
  int number = 0;
  for (const char digit : mac.substr(kFirstSeedDigit)) {
    const int value = hexadecimal(digit);
    if (value < 0) return MacText::unexpectedCharacter;
    number = number * 16 + value;
  }
  seed = number;
  return MacText::valid;
}

int NtpRestart::extraSeconds(int random) {
  constexpr double kSlots = 600.0;
  constexpr double kRandomRange = 2147483648.0;
  return static_cast<int>(random * kSlots / kRandomRange) + 1;
}

unsigned int NtpRestart::delay(int extraSeconds) {
  constexpr unsigned int kTenMinutes = 600000;
  constexpr unsigned int kMillisecondsPerSecond = 1000;
  return static_cast<unsigned int>(extraSeconds) * kMillisecondsPerSecond + kTenMinutes;
}
