#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace simulation {

// How long a step may take, by the machine's clock, before the life counts as hanging.
inline constexpr unsigned int kLongestStepSeconds = 20;

// What a program says when a life is the last thing that it does, because it crashes, hangs or is
// ended from outside: which step of which life it was, to standard error. The folder of the life
// goes too. Then the signal does what it did before. One at a time.
class LastWords {
 public:
  explicit LastWords(const std::filesystem::path& folder);
  ~LastWords();
  LastWords(const LastWords&) = delete;
  LastWords& operator=(const LastWords&) = delete;
};

// The life that is being lived, for the last words. One at a time.
class WatchedLife {
 public:
  // No seed: a life of given steps.
  explicit WatchedLife(std::optional<std::uint64_t> seed) : m_seed(seed) {}
  ~WatchedLife();
  WatchedLife(const WatchedLife&) = delete;
  WatchedLife& operator=(const WatchedLife&) = delete;

  // This step begins, and has kLongestStepSeconds.
  void begins(std::size_t step, const std::string& description);

 private:
  const std::optional<std::uint64_t> m_seed;
};

}  // namespace simulation
