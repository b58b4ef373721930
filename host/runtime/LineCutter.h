#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "framework/ApplicationLog.h"

namespace host {

// Splits what a program writes into lines. Of a line that is too long it gives the beginning and
// "...", as soon as it is too long, and drops the rest. Owner and thread: one reader.
// Failure: std::bad_alloc.
class LineCutter {
 public:
  using Take = std::function<void(std::string_view line)>;  // without the line's end

  static constexpr std::string_view kCut = "...";
  // Bytes of a line, so that the log does not cut it a second time.
  static constexpr std::size_t kLongestLine = ApplicationLog::kLongestText - kCut.size();

  // Gives the lines that end within the bytes.
  void add(std::string_view bytes, const Take& take);
  // Gives the last line, if it has no end.
  void finish(const Take& take);

 private:
  void append(std::string_view part, const Take& take);

  std::string m_begun;  // of the line that has not ended
  bool m_cut = false;   // the rest of the line is to be dropped
};

}  // namespace host
