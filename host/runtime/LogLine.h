#pragma once

#include <string>

#include "framework/ApplicationLog.h"

namespace host {

// colour: for a terminal. journal: begins with the priority, "<6>", for a service manager's
// journal.
enum class LogStyle { plain, colour, journal };

// Formats an entry as one line with its newline: the device's time, the level's name, the component
// and the text. Bytes that are not printable ASCII are shown as \xNN.
[[nodiscard]] std::string logLine(const LogEntry& entry, LogStyle style);

// Whether the descriptor is a terminal that shows colours.
[[nodiscard]] bool showsColours(int descriptor);

// Whether the descriptor leads to the journal: its device and inode are those that the service
// manager has put into $JOURNAL_STREAM. A program's children inherit the variable, and may write
// elsewhere.
[[nodiscard]] bool leadsToJournal(int descriptor);

[[nodiscard]] LogStyle styleFor(int descriptor);

}  // namespace host
