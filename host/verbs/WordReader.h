#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace host {

// Reads a verb's words one after the other. Owner: its creator; the words outlive it.
// Failure: UsageError.
class WordReader {
 public:
  // usage: for error lines, "get KEY".
  WordReader(std::span<const std::string> words, std::string_view usage);

  [[nodiscard]] bool done() const { return m_next == m_words.size(); }

  // Throws UsageError unless there is another word. what: its name in the usage.
  void require(std::string_view what) const;

  // The next word. what: its name in the usage, for the error line when there is none.
  const std::string& next(std::string_view what);

  // The next word, which must be one of `choices`; otherwise a similar one is suggested.
  const std::string& choice(std::string_view what, std::span<const std::string_view> choices);

  int integer(std::string_view what);

  // Takes the next word when it is this one.
  [[nodiscard]] bool accept(std::string_view word);

  // All that is left.
  [[nodiscard]] std::span<const std::string> rest();
  [[nodiscard]] std::string restAsText();  // joined by single spaces

  // REQUIRES of the person: no word is left.
  void end() const;

  // Throws UsageError. The message says what would be right; else the usage does, at its end.
  [[noreturn]] static void fail(const std::string& message);
  [[noreturn]] void failWithUsage(const std::string& message) const;

 private:
  std::span<const std::string> m_words;
  std::string_view m_usage;
  std::size_t m_next = 0;
};

}  // namespace host
