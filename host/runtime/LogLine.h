#pragma once

#include <string>

#include "framework/ApplicationLog.h"

namespace host {

// An entry as one line of text, newline included: the device's time, the name of the level, the
// component, the text. Bytes that are not printable are shown as \xNN. In colour: for a terminal.
[[nodiscard]] std::string logLine(const LogEntry& entry, bool inColour);

// Whether what is written to the descriptor is shown by a terminal that knows colours.
[[nodiscard]] bool showsColours(int descriptor);

}  // namespace host
