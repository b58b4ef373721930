#pragma once

#include <optional>
#include <string>

class LocalMgmtIfc;

// Reads from the local management service and reports to it. Without such a service (null), reports
// are skipped.

// The value of `key`, or nothing when it cannot be read.
std::optional<std::string> readManagementValue(LocalMgmtIfc& localMgmt, const char* key);

// Reports that the clock itself changed the value of `key`.
void reportNumber(LocalMgmtIfc* localMgmt, const char* key, int number);

// Sets the state of the item "time": settable by hand, or set by the device from this NTP server.
void showWhoSetsTime(LocalMgmtIfc* localMgmt, const std::string& server);
