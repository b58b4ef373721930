#include "verbs/KnownNames.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/PrintableText.h"
#include "verbs/DidYouMean.h"
#include "verbs/KeyCatalogue.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

constexpr std::string_view kStorageKeys[] = {
    "FallbackDateTime",
    "DateFormat",
    "TimeFormat",
    "SNTPaddress",
    "NTPsharedSecret",
    "TimezoneOffset",
    "DaylightSavingActive",
    "DaylightSavingMinutes",
    "QexTimeSource",
    "DaylightSavingZoneIDDevice",
    "AutoDaylightSavingEnabledDevice",
};

constexpr std::string_view kDeviceValues[] = {
    "mobility-user-data-update", "interface-status", "dhcp-enabled",
    "related-software-type",     "mac-addr",         "last-restart-date"};

void requireName(const char* kind, const std::string& name,
                 std::span<const std::string_view> names) {
  if (std::find(names.begin(), names.end(), name) != names.end()) return;
  std::string all;
  for (const std::string_view each : names) all.append(all.empty() ? "" : ", ").append(each);
  throw UsageError("no " + std::string(kind) + ' ' + quotedText(name) +
                   suggestion(name, names, "; there are " + all));
}

}  // namespace

const MethodRow& requireMethod(const std::string& name) {
  if (const MethodRow* const row = rowNamed(remoteMethods(), name)) return *row;
  throw UsageError("no method " + quotedText(name) +
                   suggestion(name, namesOf(remoteMethods()), "; `clockctl methods` lists them"));
}

const MethodRow& requireEvent(const std::string& name) {
  requireName("event", name, namesOf(remoteEvents()));
  return *rowNamed(remoteEvents(), name);
}

void requireManagementKey(const std::string& key) {
  requireName("key", key, namesOf(managementKeys()));
}

void requireStorageKey(const std::string& key) {
  requireName("storage key", key, kStorageKeys);
}

void requireDeviceValue(const std::string& key) {
  requireName("device value", key, kDeviceValues);
}

void requireKnownKey(const Json& request) {
  if (!request.contains("key")) return;
  const std::string key = request["key"];
  return request.value("what", "") == "value" ? requireDeviceValue(key) : requireManagementKey(key);
}

std::span<const std::string_view> storageKeys() {
  return kStorageKeys;
}

std::span<const std::string_view> deviceValues() {
  return kDeviceValues;
}

}  // namespace host
