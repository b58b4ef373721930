#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "verbs/Json.h"

namespace host {

// Print the verbs' answers (see Verb::print). Missing members are left out.
void printNothing(const Json& answer, std::ostream& out);
void printRecorded(const Json& summary, std::ostream& out);
void printCall(const Json& answer, std::ostream& out);   // NAME=VALUE, a line each
void printEvent(const Json& event, std::ostream& out);   // EVENT NAME=VALUE ...
void printValue(const Json& answer, std::ostream& out);  // the bare value
void printKeys(const Json& answer, std::ostream& out);   // a table, or one key
void printMethods(const Json& answer, std::ostream& out);
void printEvents(const Json& answer, std::ostream& out);
void printClock(const Json& answer, std::ostream& out);
void printStatus(const Json& answer, std::ostream& out);
void printHistory(const Json& answer, std::ostream& out);  // a change on each line
void printUpcoming(const Json& answer, std::ostream& out);
void printLogLevel(const Json& answer, std::ostream& out);
void printLog(const Json& answer, std::ostream& out);  // a whole answer, or one entry of a stream
void printSecurityLog(const Json& answer, std::ostream& out);
void printFrame(const Json& entry, std::ostream& out);  // MICROSECONDS PEER DIRECTION KIND ...

// A member as text on one line, without anything that a terminal would interpret; empty when there
// is none.
[[nodiscard]] std::string memberText(const Json& object, const char* name);

// A local instant "2026-03-08T03:00:00-04:00" as "2026-03-08 03:00:00 (UTC-04:00)", for people;
// with an abbreviation "(DST, UTC-04:00)". Another value as memberText.
[[nodiscard]] std::string localTimeText(const Json& object, const char* name,
                                        const std::string& abbreviation = "");

// Seconds east of UTC as "UTC-05:00"; another value as memberText.
[[nodiscard]] std::string offsetText(const Json& object, const char* name);

[[nodiscard]] std::string padded(std::string text, std::size_t width);

}  // namespace host
