#pragma once

#include <span>
#include <string>
#include <string_view>

namespace host {

// What a user of clockctl needs to know about a management key.
struct ManagementKey {
  std::string_view name;
  bool settable;
  std::string_view meaning;
  std::string_view values;   // that a set takes
  std::string_view effect;   // what follows a successful set; empty when it cannot be set
  std::string_view example;  // a valid value; empty when it cannot be set
};

// The sixteen keys, in the service's own order. A key that is not here is sent to the service, too.
[[nodiscard]] std::span<const ManagementKey> managementKeys();

// The whole text of docs/reference/management-keys.md.
[[nodiscard]] std::string managementKeysDocument();

}  // namespace host
