#pragma once

#include <optional>
#include <string>

class LocalMgmtIfc;

// What the clock asks of the local management service and reports to it, as records. Reports are
// skipped when there is no such service (null).

// The value of `key`, or nothing when it cannot be read.
std::optional<std::string> readManagementValue(LocalMgmtIfc& localMgmt, const char* key);

// The clock changed the value of `key` itself.
void reportNumber(LocalMgmtIfc* localMgmt, const char* key, int number);

// Whether "time" can be set by hand or follows this NTP server.
void showWhoSetsTime(LocalMgmtIfc* localMgmt, const std::string& server);
