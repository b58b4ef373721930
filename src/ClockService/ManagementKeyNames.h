#pragma once

// The management keys: the sixteen of the clock, and those of other components that it observes or
// reads.
namespace ManagementKeyNames {

constexpr char time[] = "time";
constexpr char simpleTime[] = "simple-time";
constexpr char simpleDate[] = "simple-date";
constexpr char dateFormat[] = "date-format";
constexpr char timeFormat[] = "time-format";
constexpr char sntpAddr[] = "sntp-addr";
constexpr char ntpSecret[] = "ntp-secret";
constexpr char sntpTzOffset[] = "sntp-tz-offset";
constexpr char daylightSave[] = "daylight-save";
constexpr char daylightSaveMinutes[] = "daylight-save-minutes";
constexpr char timeSource[] = "time-source";
constexpr char daylightSaveZoneList[] = "daylight-save-zone-list";
constexpr char daylightSaveZoneIndex[] = "daylight-save-zone-index";
constexpr char daylightSaveZoneText[] = "daylight-save-zone-text";
constexpr char daylightSaveZoneId[] = "daylight-save-zone-id";
constexpr char autoDaylightSave[] = "auto-daylight-save";

constexpr char mobilityUserDataUpdate[] = "mobility-user-data-update";
constexpr char interfaceStatus[] = "interface-status";
constexpr char dhcpEnabled[] = "dhcp-enabled";
constexpr char relatedSoftwareType[] = "related-software-type";
constexpr char macAddr[] = "mac-addr";
constexpr char lastRestartDate[] = "last-restart-date";

}  // namespace ManagementKeyNames
