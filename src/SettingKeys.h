#pragma once

// Keys of the clock's settings in the device's store, and the elements of its document.
namespace SettingKeys {

constexpr const char* kFallbackTime = "FallbackDateTime";
constexpr const char* kDateFormat = "DateFormat";
constexpr const char* kTimeFormat = "TimeFormat";
constexpr const char* kSntpAddr = "SNTPaddress";
constexpr const char* kNtpSecret = "NTPsharedSecret";
constexpr const char* kTimezoneOffset = "TimezoneOffset";
constexpr const char* kDaylightSavingActive = "DaylightSavingActive";
constexpr const char* kDaylightSavingMinutes = "DaylightSavingMinutes";
constexpr const char* kTimeSource = "QexTimeSource";
constexpr const char* kDstZoneId = "DaylightSavingZoneIDDevice";
constexpr const char* kAutomaticDaylightSaving = "AutoDaylightSavingEnabledDevice";

}  // namespace SettingKeys
