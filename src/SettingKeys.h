#pragma once

// Keys of the clock's settings in the device's store, and the elements of its document.
namespace SettingKeys {

constexpr const char* keyFallbackTime = "FallbackDateTime";
constexpr const char* keyDateFormat = "DateFormat";
constexpr const char* keyTimeFormat = "TimeFormat";
constexpr const char* keySntpAddr = "SNTPaddress";
constexpr const char* keyNtpSecret = "NTPsharedSecret";
constexpr const char* keyTimezoneOffset = "TimezoneOffset";
constexpr const char* keyDaylightSavingActive = "DaylightSavingActive";
constexpr const char* keyDaylightSavingMinutes = "DaylightSavingMinutes";
constexpr const char* keyTimeSource = "QexTimeSource";
constexpr const char* keyDstZoneId = "DaylightSavingZoneIDDevice";
constexpr const char* keyAutomaticDaylightSaving = "AutoDaylightSavingEnabledDevice";

}  // namespace SettingKeys
