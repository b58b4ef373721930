#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

// What every fuzz target is made of: a property that holds for all bytes there are. libFuzzer looks
// for bytes for which it does not, and a plain test replays those that are in the tree.
namespace fuzz {

// Each target defines it, for one parser of bytes that come from outside. Returns when the property
// holds for this input. Throws Broken when it does not; any other exception is a fault as well.
void property(std::string_view input);

struct Broken : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Throws Broken unless `condition`. what: the property, in a few words; of: what it was looked at.
void hold(bool condition, const char* what, std::string_view of = {});

// Takes an input apart, front to back; what is beyond its end is empty, or 0.
class Reader {
 public:
  explicit Reader(std::string_view input) : m_rest(input) {}

  [[nodiscard]] bool atEnd() const { return m_rest.empty(); }
  std::string_view take(std::size_t most);
  std::string_view line();  // without its end
  std::string_view word();  // up to the next blank, which goes with it
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

// A short way to write a long text: "x\#a" stands for two x, "x\#b" for four, up to "x\#t" for
// 1 MiB, the longest that comes out.
[[nodiscard]] std::string grown(std::string_view text);

// Nothing in it moves to another line or rings a bell, and a person may read it to the end.
inline constexpr std::size_t kLongestLine = 4096;
[[nodiscard]] bool isShortLine(std::string_view text);

}  // namespace fuzz
