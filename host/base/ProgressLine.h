#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace host {

// Whether long work shows its progress there: on a terminal that can replace a line, and not in CI.
[[nodiscard]] bool showsProgress(int descriptor);

// ", 1:05 left", in minutes and seconds, from the time that the first parts took; empty: not known.
[[nodiscard]] std::string timeLeft(std::size_t done, std::size_t all,
                                   std::chrono::steady_clock::duration since);

// "3 of 28 scenarios, 1 failed, 0:05 left", on one line that is replaced. Owner: its creator; the
// stream outlives it. Thread: one.
class ProgressLine {
 public:
  // err: null shows nothing.
  ProgressLine(std::size_t all, std::string_view what, std::ostream* err);

  void show(std::size_t done, const std::string& more = "");
  void hide();  // before other lines, and at the end

 private:
  const std::size_t m_all;
  const std::string m_what;
  std::ostream* const m_err;
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

}  // namespace host
