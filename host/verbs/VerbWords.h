#pragma once

#include <cstdint>
#include <string_view>

#include "verbs/Json.h"

namespace host {

class WordReader;

// The key that `set` gives an instant or a local time.
inline constexpr std::string_view kTimeKey = "time";

// The most rows that `history` and `upcoming` list.
inline constexpr int kMostRows = 1000;

// One function for each kind of word that verbs take (see VerbWord). Reads one word, or all words
// that are left, and returns the value of the request's member. `usage` is the word's text in the
// usage line. Throws UsageError.
[[nodiscard]] Json readText(WordReader& words, std::string_view usage);
[[nodiscard]] Json readOptionalText(WordReader& words, std::string_view usage);  // or null
// {"key": KEY, "value": TEXT}, or for the key time {"key": "time", "local": TEXT}
[[nodiscard]] Json readSetting(WordReader& words, std::string_view usage);
[[nodiscard]] Json readInteger(WordReader& words, std::string_view usage);
[[nodiscard]] Json readChoice(WordReader& words, std::string_view usage);    // usage: "up|down"
[[nodiscard]] Json readOption(WordReader& words, std::string_view usage);    // usage: "[--follow]"
[[nodiscard]] Json readSpeed(WordReader& words, std::string_view usage);     // a text
[[nodiscard]] Json readDuration(WordReader& words, std::string_view usage);  // seconds
[[nodiscard]] Json readInstant(WordReader& words, std::string_view usage);   // seconds since 1970
// {"seconds": N} as readInstant, or {"local": TEXT} after the word `local`
[[nodiscard]] Json readInstantOrLocal(WordReader& words, std::string_view usage);
[[nodiscard]] std::int64_t readRealDuration(WordReader& words);  // milliseconds
// {"seconds": N}, or {"microseconds": N} for a text with a fraction, as "2.5s"
[[nodiscard]] Json readAdvance(WordReader& words, std::string_view usage);
// {"count": N, "for": MILLISECONDS, "overwrite": BOOL}; 0: no limit
[[nodiscard]] Json readRecord(WordReader& words, std::string_view usage);
// {"events": [NAME, ...], "where": {NAME: VALUE, ...}, "count": N, "for": MILLISECONDS}; 0: no
// limit
[[nodiscard]] Json readWatch(WordReader& words, std::string_view usage);
[[nodiscard]] Json readWait(WordReader& words,
                            std::string_view usage);  // one event or more, count 1
[[nodiscard]] Json readHostLimit(WordReader& words, std::string_view usage);  // {"for": MS} or {}
// {"follow": BOOL, "level": N}, the level only if there is one
[[nodiscard]] Json readLog(WordReader& words, std::string_view usage);
// {"level": N}, or {} without the word
[[nodiscard]] Json readLogLevel(WordReader& words, std::string_view usage);
// {"count": N}, 1-1000, or {} without the word
[[nodiscard]] Json readMost(WordReader& words, std::string_view usage);
// {"count": N, "until": SECONDS, "plot": FILE}, in any order, each or none
[[nodiscard]] Json readUpcoming(WordReader& words, std::string_view usage);
[[nodiscard]] Json readArguments(WordReader& words, std::string_view usage);  // [NAME=VALUE ...]

}  // namespace host
