#pragma once

// When the NTP client restarts after a full hour: a random delay that differs between devices, so
// that a fleet does not query its time server all at once. Pure.
namespace NtpRestart {

enum class MacText { valid, wrongLength, unexpectedCharacter };

// text: twelve hexadecimal digits without separators. seed: the last six as a number, 0-16777215;
// 0 when the text is not valid.
MacText seedOf(const char* text, int& seed);

// random: 0-2147483647, from the standard generator. Result: 1-600, seconds on top of ten minutes.
int extraSeconds(int random);

// The whole delay of a restart in milliseconds: 601000-1200000.
unsigned int delay(int extraSeconds);

}  // namespace NtpRestart
