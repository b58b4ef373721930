#pragma once

#include <cstddef>
#include <string_view>

// Whether no two rows of a table have the same name.
template <class Table>
constexpr bool namesAreUnique(const Table& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j)
      if (std::string_view(rows[i].name) == rows[j].name) return false;
  }
  return true;
}
