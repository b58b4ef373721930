#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

// Tables whose rows have a member `name`.
namespace host {

// The row with this name; null when there is none.
template <typename Rows>
[[nodiscard]] constexpr auto rowNamed(const Rows& rows, std::string_view name) {
  const auto found = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const auto& row) { return row.name == name; });
  return found == std::end(rows) ? nullptr : &*found;
}

template <typename Rows>
[[nodiscard]] constexpr bool namesAreUnique(const Rows& rows) {
  return std::all_of(std::begin(rows), std::end(rows),
                     [&](const auto& row) { return rowNamed(rows, row.name) == &row; });
}

// In the order of the rows, for suggestions.
template <typename Rows>
[[nodiscard]] std::vector<std::string_view> namesOf(const Rows& rows) {
  std::vector<std::string_view> names;
  for (const auto& row : rows) names.push_back(row.name);
  return names;
}

}  // namespace host
