#pragma once

#include <optional>
#include <string>

class LocalMgmtIfc;

// The device's value of `key` as the local management service gives it, or nothing.
std::optional<std::string> readManagementValue(LocalMgmtIfc& localMgmt, const char* key);
