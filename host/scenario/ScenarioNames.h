#pragma once

#include <span>
#include <string>
#include <string_view>

#include "verbs/Json.h"

// The names that a scenario may use, so that a mistyped one is refused before anything runs. The
// require functions throw UsageError with the nearest known name. Pure; thread: any.
namespace host {

void requireManagementKey(const std::string& key);
void requireStorageKey(const std::string& key);
void requireDeviceValue(const std::string& key);

// The key of a verb's request, if it has one.
void requireKnownKey(const Json& request);

// The items that the service keeps in the store, and the values of the device that it reads,
// observes or writes. A test compares them with the service's own lists.
[[nodiscard]] std::span<const std::string_view> storageKeys();
[[nodiscard]] std::span<const std::string_view> deviceValues();

}  // namespace host
