#pragma once

#include <array>
#include <string_view>

namespace simulation {

struct ZoneRow {
  std::string_view name;
  std::string_view rule;
};

// The zones on offer; a row's number is both its place in the list and its identifier.
extern const std::array<ZoneRow, 15> kZones;

}  // namespace simulation
