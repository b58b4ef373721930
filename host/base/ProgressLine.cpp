#include "base/ProgressLine.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <ostream>

namespace host {

bool showsProgress(int descriptor) {
  const char* const terminal = std::getenv("TERM");
  const bool replaces = terminal == nullptr || std::string_view(terminal) != "dumb";
  return replaces && std::getenv("CI") == nullptr && ::isatty(descriptor) == 1;
}

std::string timeLeft(std::size_t done, std::size_t all, std::chrono::steady_clock::duration since) {
  if (done == 0 || done >= all) return "";
  const auto left = since / static_cast<std::int64_t>(done) * static_cast<std::int64_t>(all - done);
  const auto seconds = std::chrono::ceil<std::chrono::seconds>(left).count();
  return ", " + std::to_string(seconds / 60) + (seconds % 60 < 10 ? ":0" : ":") +
         std::to_string(seconds % 60) + " left";
}

ProgressLine::ProgressLine(std::size_t all, std::string_view what, std::ostream* err)
    : m_all(all), m_what(what), m_err(err) {}

void ProgressLine::show(std::size_t done, const std::string& more) {
  if (m_err == nullptr) return;
  *m_err << done << " of " << m_all << ' ' << m_what << more
         << timeLeft(done, m_all, std::chrono::steady_clock::now() - m_start) << std::flush;
}

void ProgressLine::hide() {
  if (m_err != nullptr) *m_err << "\r\x1B[K" << std::flush;
}

}  // namespace host
