#pragma once

#include <span>
#include <string>

#include "verbs/Json.h"

// The names that commands and scenarios use, so that a mistyped one is refused before anything is
// done. The require functions throw UsageError with the nearest known name, or with all of them.
// Pure; thread: any.
namespace host {

struct MethodRow;

// The result is a row of the catalogue.
[[nodiscard]] const MethodRow& requireMethod(const std::string& name);
[[nodiscard]] const MethodRow& requireEvent(const std::string& name);

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
