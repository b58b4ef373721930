#pragma once

#include <span>
#include <string>
#include <string_view>

namespace host {

// One management key as a person at clockctl needs to know it.
struct ManagementKey {
  std::string_view name;
  bool settable;
  std::string_view meaning;
  std::string_view values;   // what a set takes, in a few words
  std::string_view effect;   // what follows a successful set; empty when it cannot be set
  std::string_view example;  // a value a set takes; empty when it cannot be set
};

// The sixteen keys, in the service's own order. A key that is not here is sent to the service, too.
[[nodiscard]] std::span<const ManagementKey> managementKeys();

// docs/reference/management-keys.md, whole.
[[nodiscard]] std::string managementKeysDocument();

}  // namespace host
