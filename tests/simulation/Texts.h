#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace simulation {

// printf into a text of up to 2047 characters.
[[nodiscard]] std::string print(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Splits at the bars: "a||b" has three words.
[[nodiscard]] std::vector<std::string> words(const std::string& text);

// The local time of an instant in the process's TZ.
[[nodiscard]] tm localAt(std::int64_t instant);

// The display text of a time of day (format 0: 24 hours).
[[nodiscard]] std::string timeText(const tm& reading, int format);

// A date in the form of a mask: "dd.mm.yy" yields "07.03.24". Empty without a mask.
[[nodiscard]] std::string dateText(const tm& reading, const std::string& mask);

// The masks of date formats 0 to 2.
inline constexpr const char* kDateMasks[] = {"dd.mm.yy", "yy-mm-dd", "mm/dd/yy"};
inline constexpr const char* kShortDateMasks[] = {"dd.mm.", "mm-dd", "mm/dd/"};
inline constexpr const char* kSimpleDateMasks[] = {"dd.mm.yyyy", "yyyy-mm-dd", "mm/dd/yyyy"};

// The number at the positions where the mask has this letter. Throws std::out_of_range if the text
// ends before them.
[[nodiscard]] int maskedNumber(const std::string& text, const std::string& mask, char letter);

// The 25-character UTC text of an instant, and back.
[[nodiscard]] std::string utcText(std::int64_t instant);
[[nodiscard]] std::optional<std::int64_t> instantOf(const std::string& utc);

// The leading decimal number of a text: 0 without one, limited to 32 bits.
[[nodiscard]] int leadingNumber(const std::string& text);

// The number limited to 32 bits.
[[nodiscard]] int within32(std::int64_t number);

// Whole seconds of milliseconds, rounded down.
[[nodiscard]] std::int64_t floorSeconds(std::int64_t milliseconds);

}  // namespace simulation
