#include "scenario/ScenarioWords.h"

#include "base/PrintableText.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

constexpr std::string_view kBlanks = " \t\r";

char unescaped(char letter) {
  switch (letter) {
    case '"':
    case '\\':
      return letter;
    case 'n':
      return '\n';
    default:
      throw UsageError(quotedText(std::string{'\\', letter}) +
                       " is not an escape; write \\\", \\\\ or \\n");
  }
}

// From just after the opening quote to just after the closing one.
std::string quotedWord(std::string_view line, std::size_t& at) {
  std::string word;
  while (at < line.size() && line[at] != '"') {
    if (line[at] == '\\' && at + 1 < line.size()) {
      word += unescaped(line[at + 1]);
      at += 2;
    } else {
      word += line[at++];
    }
  }
  if (at == line.size()) throw UsageError("a quote is not closed; it ends with \"");
  ++at;
  return word;
}

// Up to the next blank; a quoted part may stand anywhere in it, as in NAME="two words".
std::string nextWord(std::string_view line, std::size_t& at) {
  std::string word;
  while (at < line.size() && kBlanks.find(line[at]) == std::string_view::npos) {
    if (line[at] == '"') {
      word += quotedWord(line, ++at);
    } else {
      word += line[at++];
    }
  }
  return word;
}

}  // namespace

std::vector<std::string> splitScenarioLine(std::string_view line) {
  std::vector<std::string> words;
  std::size_t at = 0;
  for (;;) {
    at = line.find_first_not_of(kBlanks, at);
    if (at == std::string_view::npos || line[at] == '#') return words;
    words.push_back(nextWord(line, at));
  }
}

}  // namespace host
