#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

// Each fuzz target checks a property that must hold for any input. libFuzzer searches for inputs
// that violate it, and a plain test replays the corpus in the tree.
namespace fuzz {

// Each target defines it, for one parser of bytes that come from outside. Returns if the property
// holds for this input. Throws Broken if it does not; any other exception is a fault as well.
void property(std::string_view input);

struct Broken : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Throws Broken unless `condition`. what: the property, in a few words; of: the value checked.
void hold(bool condition, const char* what, std::string_view of = {});

// Reads an input from front to back. Beyond its end, texts are empty and numbers are 0.
class Reader {
 public:
  explicit Reader(std::string_view input) : m_rest(input) {}

  [[nodiscard]] bool atEnd() const { return m_rest.empty(); }
  std::string_view take(std::size_t most);
  std::string_view line();  // without its end
  std::string_view word();  // up to the next blank, which is skipped
  std::string_view rest() { return take(m_rest.size()); }
  std::uint8_t byte() { return number<std::uint8_t>(); }

  // The bytes of the number as they are in memory.
  template <class Number>
  Number number() {
    Number value{};
    const std::string_view bytes = take(sizeof value);
    if (!bytes.empty()) std::memcpy(&value, bytes.data(), bytes.size());
    return value;
  }

 private:
  std::string_view m_rest;
};

// Expands the short notation for long texts: "x\#a" stands for two x, "x\#b" for four, up to "x\#t"
// for 1 MiB, to which the result is limited.
[[nodiscard]] std::string expanded(std::string_view text);

// One short line without control characters.
inline constexpr std::size_t kLongestLine = 4096;
[[nodiscard]] bool isShortLine(std::string_view text);

}  // namespace fuzz
