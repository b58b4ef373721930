#pragma once

// The management keys: the sixteen of the clock, and those of other components that it observes or
// reads.
namespace ManagementKeyNames {

constexpr char kTime[] = "time";
constexpr char kSimpleTime[] = "simple-time";
constexpr char kSimpleDate[] = "simple-date";
constexpr char kDateFormat[] = "date-format";
constexpr char kTimeFormat[] = "time-format";
constexpr char kSntpAddr[] = "sntp-addr";
constexpr char kNtpSecret[] = "ntp-secret";
constexpr char kSntpTzOffset[] = "sntp-tz-offset";
constexpr char kDaylightSave[] = "daylight-save";
constexpr char kDaylightSaveMinutes[] = "daylight-save-minutes";
constexpr char kTimeSource[] = "time-source";
constexpr char kDaylightSaveZoneList[] = "daylight-save-zone-list";
constexpr char kDaylightSaveZoneIndex[] = "daylight-save-zone-index";
constexpr char kDaylightSaveZoneText[] = "daylight-save-zone-text";
constexpr char kDaylightSaveZoneId[] = "daylight-save-zone-id";
constexpr char kAutoDaylightSave[] = "auto-daylight-save";

constexpr char kMobilityUserDataUpdate[] = "mobility-user-data-update";
constexpr char kInterfaceStatus[] = "interface-status";
constexpr char kDhcpEnabled[] = "dhcp-enabled";
constexpr char kRelatedSoftwareType[] = "related-software-type";
constexpr char kMacAddr[] = "mac-addr";
constexpr char kLastRestartDate[] = "last-restart-date";

}  // namespace ManagementKeyNames
