#pragma once

#include <string_view>

// Whether no two rows of a table have the same name.
template <class Table>
constexpr bool namesAreUnique(const Table& rows) {
  for (const auto& row : rows) {
    for (const auto* earlier = rows.data(); earlier != &row; ++earlier)
      if (std::string_view(row.name) == earlier->name) return false;
  }
  return true;
}
