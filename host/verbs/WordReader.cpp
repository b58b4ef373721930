#include "verbs/WordReader.h"

#include <algorithm>

#include "base/PrintableText.h"
#include "verbs/CallWords.h"
#include "verbs/Choices.h"
#include "verbs/DidYouMean.h"
#include "verbs/UsageError.h"

namespace host {

WordReader::WordReader(std::span<const std::string> words, std::string_view usage)
    : m_words(words), m_usage(usage) {}

void WordReader::require(std::string_view what) const {
  if (done()) failWithUsage(std::string(what) + " is missing");
}

const std::string& WordReader::next(std::string_view what) {
  require(what);
  return m_words[m_next++];
}

const std::string& WordReader::choice(std::span<const std::string_view> choices) {
  if (done()) fail("a word is missing: " + alternatives(choices));
  const std::string& word = m_words[m_next++];
  if (std::find(choices.begin(), choices.end(), word) == choices.end()) {
    fail(quotedText(word) + " is not " + alternatives(choices) + suggestion(word, choices));
  }
  return word;
}

int WordReader::integer(std::string_view what) {
  const std::string& word = next(what);
  if (const std::optional<int> value = parseInteger(word)) return *value;
  fail(quotedText(word) + " is not a number; " + std::string(what) +
       " is a decimal integer of 32 bits");
}

bool WordReader::accept(std::string_view word) {
  if (done() || m_words[m_next] != word) return false;
  ++m_next;
  return true;
}

bool WordReader::startsWith(std::string_view prefix) const {
  return !done() && m_words[m_next].starts_with(prefix);
}

std::span<const std::string> WordReader::rest() {
  const auto words = m_words.subspan(m_next);
  m_next = m_words.size();
  return words;
}

std::string WordReader::restAsText() {
  std::string text;
  for (const std::string& word : rest()) {
    if (!text.empty()) text += ' ';
    text += word;
  }
  return text;
}

void WordReader::end() const {
  if (!done()) failWithUsage(quotedText(m_words[m_next]) + " is one word too many");
}

void WordReader::fail(const std::string& message) {
  throw UsageError(message);
}

void WordReader::failWithUsage(const std::string& message) const {
  fail(message + " (usage: " + std::string(m_usage) + ")");
}

void WordReader::failForm(std::string_view word, const char* kind, std::string_view forms) const {
  const std::string subject = m_subject.empty() ? "" : m_subject + ": ";
  fail(subject + quotedText(word) + " is not " + kind + "; write " + std::string(forms));
}

}  // namespace host
