#pragma once

#include <string>

#include "framework/ApplicationLog.h"

namespace host {

// Formats an entry as one line with its newline: the device's time, the level's name, the component
// and the text. Bytes that are not printable ASCII are shown as \xNN. inColour: for a terminal.
[[nodiscard]] std::string logLine(const LogEntry& entry, bool inColour);

// Whether the descriptor is a terminal that shows colours.
[[nodiscard]] bool showsColours(int descriptor);

}  // namespace host
