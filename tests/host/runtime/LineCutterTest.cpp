#include "runtime/LineCutter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace host {
namespace {

using Texts = std::vector<std::string>;

// The lines of a text that is read in parts of `size` bytes.
Texts linesOf(const std::string& text, std::size_t size) {
  Texts lines;
  const auto take = [&](std::string_view line) { lines.emplace_back(line); };
  LineCutter cutter;
  for (std::size_t at = 0; at < text.size(); at += size) cutter.add(text.substr(at, size), take);
  cutter.finish(take);
  return lines;
}

TEST(LineCutter, SplitsTheTextWhateverThePartsAre) {
  const std::string longest(LineCutter::kLongestLine, 'x');
  const std::string cut = longest + "...";
  const struct {
    std::string text;
    Texts lines;
  } rows[] = {
      {"", {}},
      {"one", {"one"}},
      {"one\n", {"one"}},
      {"one\ntwo\nrest", {"one", "two", "rest"}},
      {"\n\none\n\n", {"one"}},
      {"one\r\ntwo\r", {"one", "two"}},
      {"a\rb\n", {"a\rb"}},
      {longest + "\ntwo\n", {longest, "two"}},
      {longest + "x\ntwo\n", {cut, "two"}},
      {longest + longest + longest, {cut}},
      {std::string(LineCutter::kLongestLine - 1, 'x') + "\xC3\xA9\nb",
       {std::string(LineCutter::kLongestLine - 1, 'x') + "...", "b"}},
  };
  for (const auto& row : rows) {
    for (const std::size_t size : {1U, 2U, 7U, 4096U}) {
      EXPECT_EQ(linesOf(row.text, size), row.lines) << row.text << " in parts of " << size;
    }
  }
}

TEST(LineCutter, GivesTheBeginningOfALineThatDoesNotEnd) {
  Texts lines;
  LineCutter cutter;
  for (int i = 0; i < 100; ++i) {
    cutter.add(std::string(100, 'x'), [&](std::string_view line) { lines.emplace_back(line); });
  }
  EXPECT_EQ(lines, Texts{std::string(LineCutter::kLongestLine, 'x') + "..."});
}

}  // namespace
}  // namespace host
