#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// "Did you mean": the known word nearest to a mistyped one. Pure; thread: any.
namespace host {

// Insertions, deletions, replacements and swaps of neighbours that turn one text into the other;
// letter case does not count.
[[nodiscard]] std::size_t editDistance(std::string_view left, std::string_view right);

// The candidate with the smallest distance, the first of several such; empty without candidates.
[[nodiscard]] std::string_view nearest(std::string_view word,
                                       std::span<const std::string_view> candidates);

// "; did you mean \"X\"?", or `otherwise` when no candidate is similar enough to be a typing
// error: one changed letter, or up to a third of the longer word.
[[nodiscard]] std::string suggestion(std::string_view word,
                                     std::span<const std::string_view> candidates,
                                     std::string_view otherwise = {});

}  // namespace host
