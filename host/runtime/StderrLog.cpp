#include "runtime/StderrLog.h"

#include <spdlog/formatter.h>
#include <spdlog/sinks/stdout_color_sinks.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>

namespace host {
namespace {

struct Level {
  const char* name;
  spdlog::level::level_enum colour;
};

constexpr std::array<Level, 7> kLevels = {{{"fatal", spdlog::level::critical},
                                           {"critical", spdlog::level::critical},
                                           {"error", spdlog::level::err},
                                           {"warning", spdlog::level::warn},
                                           {"note", spdlog::level::info},
                                           {"info", spdlog::level::debug},
                                           {"trace", spdlog::level::trace}}};

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

std::string timeText(spdlog::log_clock::time_point time) {
  const std::time_t seconds = spdlog::log_clock::to_time_t(time);
  std::tm utc{};
  ::gmtime_r(&seconds, &utc);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

// Of its own, since the library's takes the first second of 1970 for one it has formatted already,
// and that is where the device's clock starts. The level's name comes as the logger's.
class LineFormatter : public spdlog::formatter {
 public:
  void format(const spdlog::details::log_msg& entry, spdlog::memory_buf_t& line) override {
    append(line, timeText(entry.time));
    append(line, " ");
    entry.color_range_start = line.size();
    append(line, entry.logger_name);
    entry.color_range_end = line.size();
    while (line.size() < entry.color_range_start + kNameWidth) line.push_back(' ');
    append(line, " ");
    append(line, entry.payload);
    append(line, "\n");
  }
  std::unique_ptr<spdlog::formatter> clone() const override {
    return std::make_unique<LineFormatter>();
  }

 private:
  static constexpr std::size_t kNameWidth = 8;
  static void append(spdlog::memory_buf_t& line, spdlog::string_view_t text) {
    line.append(text.data(), text.data() + text.size());
  }
};

}  // namespace

const char* levelName(int level) {
  return levelOf(level).name;
}

StderrLog::StderrLog() : m_sink(std::make_unique<spdlog::sinks::stderr_color_sink_mt>()) {
  m_sink->set_formatter(std::make_unique<LineFormatter>());
}

StderrLog::~StderrLog() = default;

void StderrLog::write(const LogEntry& entry) {
  const std::string line =
      (entry.systemLog ? "system log" : entry.component) + ": " + printable(entry.text);
  const spdlog::log_clock::time_point time{
      std::chrono::duration_cast<spdlog::log_clock::duration>(entry.wall)};
  const Level& level = levelOf(entry.level);
  m_sink->log(spdlog::details::log_msg(time, spdlog::source_loc{}, level.name, level.colour, line));
}

}  // namespace host
