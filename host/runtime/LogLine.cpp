#include "runtime/LogLine.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "base/InstantText.h"
#include "base/LogLevels.h"

namespace host {
namespace {

constexpr const char* kPlain = "\033[m";
constexpr std::size_t kNameWidth = 8;

// Escape sequences that switch to the colour of each level.
constexpr std::array<const char*, kLogLevelNames.size()> kColours = {
    "\033[1;41m", "\033[1;41m", "\033[1;31m", "\033[1;33m", "\033[32m", "\033[36m", "\033[37m"};

// Drops final newlines: the line has its own.
std::string printable(const std::string& text) {
  const std::size_t length = text.find_last_not_of('\n') + 1;
  std::string line;
  for (std::size_t i = 0; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte >= 0x20 && byte < 0x7f) {
      line += text[i];
      continue;
    }
    char escape[5];
    std::snprintf(escape, sizeof escape, "\\x%02X", byte);
    line += escape;
  }
  return line;
}

}  // namespace

bool showsColours(int descriptor) {
  const char* const terminal = std::getenv("TERM");
  return terminal != nullptr && std::string_view(terminal) != "dumb" && ::isatty(descriptor) == 1;
}

bool leadsToJournal(int descriptor) {
  const char* const stream = std::getenv("JOURNAL_STREAM");
  struct stat found {};
  return stream != nullptr && ::fstat(descriptor, &found) == 0 &&
         std::to_string(found.st_dev) + ':' + std::to_string(found.st_ino) == stream;
}

LogStyle styleFor(int descriptor) {
  if (leadsToJournal(descriptor)) return LogStyle::journal;
  return showsColours(descriptor) ? LogStyle::colour : LogStyle::plain;
}

// The journal's priorities are those of syslog, which has one more severe level than the host.
std::string logLine(const LogEntry& entry, LogStyle style) {
  const auto level = static_cast<std::size_t>(std::clamp(entry.level, 0, 6));
  const std::string name = kLogLevelNames[level];
  const std::string shown = style == LogStyle::colour ? kColours[level] + name + kPlain : name;
  const std::string priority =
      style == LogStyle::journal ? '<' + std::to_string(level + 1) + '>' : "";
  return priority + instantText(std::chrono::duration_cast<std::chrono::seconds>(entry.wall)) +
         " " + shown + std::string(kNameWidth - name.size(), ' ') + " " +
         (entry.systemLog ? "system log" : entry.component) + ": " + printable(entry.text) + "\n";
}

}  // namespace host
