#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace host {

// Reads a verb's words one after the other. Owner: its creator; the words and the usage outlive it.
// Failure: UsageError.
class WordReader {
 public:
  // usage: for error lines, "get KEY".
  WordReader(std::span<const std::string> words, std::string_view usage);

  // For failForm: "clock speed".
  void setSubject(std::string subject) { m_subject = std::move(subject); }

  [[nodiscard]] bool done() const { return m_next == m_words.size(); }

  // Throws UsageError unless there is another word. what: its name in the usage.
  void require(std::string_view what) const;

  // The next word. what: its name in the usage, for the error line when there is none.
  const std::string& next(std::string_view what);

  // The next word, which must be one of `choices`; otherwise a similar one is suggested.
  const std::string& choice(std::span<const std::string_view> choices);

  int integer(std::string_view what);

  // Takes the next word when it is this one.
  [[nodiscard]] bool accept(std::string_view word);

  [[nodiscard]] bool startsWith(std::string_view prefix) const;  // the next word

  // All remaining words.
  [[nodiscard]] std::span<const std::string> rest();
  [[nodiscard]] std::string restAsText();  // joined by single spaces

  // Throws UsageError if a word is left.
  void end() const;

  // Throw UsageError. The message says what would be right; otherwise the usage is appended.
  [[noreturn]] static void fail(const std::string& message);
  [[noreturn]] void failWithUsage(const std::string& message) const;

  // "SUBJECT: WORD is not KIND; write FORMS"
  [[noreturn]] void failForm(std::string_view word, const char* kind, std::string_view forms) const;

 private:
  std::span<const std::string> m_words;
  std::string_view m_usage;
  std::string m_subject;
  std::size_t m_next = 0;
};

}  // namespace host
