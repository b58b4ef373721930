#include "runtime/LogLine.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace host {
namespace {

struct Level {
  const char* name;
  const char* colour;  // the terminal's sequence that begins it
};

constexpr const char* kPlain = "\033[m";
constexpr std::size_t kNameWidth = 8;

constexpr std::array<Level, 7> kLevels = {{{"fatal", "\033[1;41m"},
                                           {"critical", "\033[1;41m"},
                                           {"error", "\033[1;31m"},
                                           {"warning", "\033[1;33m"},
                                           {"note", "\033[32m"},
                                           {"info", "\033[36m"},
                                           {"trace", "\033[37m"}}};

const Level& levelOf(int number) {
  return kLevels[static_cast<std::size_t>(std::clamp(number, 0, 6))];
}

// Final newlines are dropped: the line has its own.
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

std::string timeText(std::chrono::nanoseconds wall) {
  const auto seconds =
      static_cast<std::time_t>(std::chrono::duration_cast<std::chrono::seconds>(wall).count());
  std::tm utc{};
  ::gmtime_r(&seconds, &utc);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

}  // namespace

bool showsColours(int descriptor) {
  const char* const terminal = std::getenv("TERM");
  return terminal != nullptr && std::string_view(terminal) != "dumb" && ::isatty(descriptor) == 1;
}

std::string logLine(const LogEntry& entry, bool inColour) {
  const Level& level = levelOf(entry.level);
  const std::string name(level.name);
  const std::string shown = inColour ? level.colour + name + kPlain : name;
  return timeText(entry.wall) + " " + shown + std::string(kNameWidth - name.size(), ' ') + " " +
         (entry.systemLog ? "system log" : entry.component) + ": " + printable(entry.text) + "\n";
}

}  // namespace host
