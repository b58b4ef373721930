#include "verbs/OffsetPlot.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <vector>

#include "base/Error.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::months;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

// In the drawing's units.
constexpr std::int64_t kLeft = 90;
constexpr std::int64_t kRight = 870;
constexpr std::int64_t kTop = 50;
constexpr std::int64_t kBottom = 250;

constexpr std::int64_t kPlotted = std::int64_t{365} * 86400;
constexpr std::int64_t kLargestOffset = 86400;  // seconds
constexpr std::int64_t kAround = 3600;          // seconds above and below the curve

struct Step {
  std::int64_t at;      // seconds since 1970-01-01 UTC
  std::int64_t offset;  // seconds east of UTC
};

struct Frame {
  std::int64_t begin;
  std::int64_t lowest;
  std::int64_t highest;

  [[nodiscard]] std::int64_t x(std::int64_t at) const {
    return kLeft + (at - begin) * (kRight - kLeft) / kPlotted;
  }
  [[nodiscard]] std::int64_t y(std::int64_t offset) const {
    return kBottom - (offset - lowest) * (kBottom - kTop) / (highest - lowest);
  }
};

std::string decimal(std::int64_t value) {
  return std::to_string(value);
}

std::string text(std::int64_t x, std::int64_t y, const char* anchor, const std::string& words) {
  return "<text x=\"" + decimal(x) + "\" y=\"" + decimal(y) + "\" text-anchor=\"" + anchor + "\">" +
         words + "</text>\n";
}

std::string line(std::int64_t x1, std::int64_t y1, std::int64_t x2, std::int64_t y2) {
  return "<line x1=\"" + decimal(x1) + "\" y1=\"" + decimal(y1) + "\" x2=\"" + decimal(x2) +
         "\" y2=\"" + decimal(y2) + "\" stroke=\"#bbb\"/>\n";
}

// A line for the first day of each month, with its name.
std::string monthLines(const Frame& frame) {
  const auto first = floor<days>(std::chrono::sys_seconds(seconds(frame.begin)));
  auto month = year_month_day(first);
  std::string lines;
  for (month = month.year() / month.month() / 1;; month += months(1)) {
    const std::int64_t at = seconds(sys_days(month).time_since_epoch()).count();
    if (at > frame.begin + kPlotted) return lines;
    if (at < frame.begin) continue;
    lines += line(frame.x(at), kTop, frame.x(at), kBottom) +
             text(frame.x(at), kBottom + 20, "middle", instantText(seconds(at)).substr(0, 7));
  }
}

std::string curve(const Frame& frame, const std::vector<Step>& steps) {
  std::string path = "M" + decimal(kLeft) + ' ' + decimal(frame.y(steps.front().offset));
  for (const Step& step : steps) {
    path += " H" + decimal(frame.x(step.at)) + " V" + decimal(frame.y(step.offset));
  }
  return "<path d=\"" + path + " H" + decimal(kRight) +
         "\" fill=\"none\" stroke=\"#06c\" stroke-width=\"2\"/>\n";
}

std::string marks(const Frame& frame, const std::vector<Step>& steps) {
  std::string marks;
  for (std::size_t i = 1; i < steps.size(); ++i) {
    const std::int64_t x = frame.x(steps[i].at);
    marks += "<circle cx=\"" + decimal(x) + "\" cy=\"" + decimal(frame.y(steps[i].offset)) +
             "\" r=\"4\" fill=\"#c30\"/>\n" +
             text(x, kTop - 8, "middle", instantText(seconds(steps[i].at)));
  }
  return marks;
}

std::vector<Step> stepsOf(const Json& answer) {
  std::vector<Step> steps;
  for (const Json& step : answer.at("offsets")) {
    const Step read{step.at("seconds").get<std::int64_t>(), step.at("offset").get<std::int64_t>()};
    const bool fits =
        read.at >= 0 && read.at <= kLastInstant.count() && std::abs(read.offset) <= kLargestOffset;
    if (!fits) throw Error("the host's answer has an offset that no zone has");
    steps.push_back(read);
  }
  return steps;
}

}  // namespace

std::string offsetPlot(const Json& answer) {
  std::vector<Step> steps = stepsOf(answer);
  if (steps.empty()) steps.push_back({0, 0});
  const auto [low, high] = std::minmax_element(
      steps.begin(), steps.end(), [](const Step& a, const Step& b) { return a.offset < b.offset; });
  const Frame frame{steps.front().at, low->offset - kAround, high->offset + kAround};
  std::string svg =
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 900 300\" "
      "font-family=\"sans-serif\" "
      "font-size=\"11\">\n<rect width=\"900\" height=\"300\" fill=\"white\"/>\n" +
      text(450, 18, "middle", "Local time, from " + instantText(seconds(steps.front().at))) +
      monthLines(frame);
  std::vector<std::int64_t> levels;
  for (const Step& step : steps) {
    if (std::find(levels.begin(), levels.end(), step.offset) != levels.end()) continue;
    levels.push_back(step.offset);
    svg += text(kLeft - 8, frame.y(step.offset) + 4, "end", offsetText(seconds(step.offset)));
  }
  return svg + curve(frame, steps) + marks(frame, steps) + "</svg>\n";
}

}  // namespace host
