#include "apps/CommandFile.h"

#include <iostream>
#include <utility>

#include "base/Error.h"
#include "base/PrintableText.h"
#include "scenario/ScenarioWords.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

// A request is shorter. A line without an end, as in /dev/zero, would fill the memory.
constexpr std::size_t kLongestLine = std::size_t{1024} * 1024;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

CommandFile::CommandFile(std::filesystem::path file)
    : m_file(std::move(file)), m_in(m_file == "-" ? std::cin : m_opened) {
  if (m_file == "-") return;
  m_opened.open(m_file);
  if (!m_opened || std::filesystem::is_directory(m_file)) fail();
}

bool CommandFile::next() {
  do {
    if (!readLine()) return false;
    ++m_number;
    if (m_number == 1 && m_line.starts_with(kByteOrderMark)) m_line.erase(0, kByteOrderMark.size());
    m_words = splitScenarioLine(m_line);
  } while (m_words.empty());
  return true;
}

std::string CommandFile::place() const {
  return escapedLine(m_file.string()) + ':' + std::to_string(m_number) + ": ";
}

bool CommandFile::readLine() {
  m_line.clear();
  for (char letter = 0; m_in.get(letter) && letter != '\n'; m_line += letter) {
    if (m_line.size() < kLongestLine) continue;
    ++m_number;
    m_in.setstate(std::ios::eofbit);
    throw UsageError("the line is longer than 1 MiB");
  }
  if (m_in.bad()) {
    m_in.clear(std::ios::eofbit | std::ios::failbit);  // the end, for who goes on
    fail();
  }
  return m_in || !m_line.empty();
}

void CommandFile::fail() const {
  throw Error(escapedLine(m_file.string()) + " cannot be read; name a file of commands, or - for " +
              "standard input");
}

}  // namespace host
