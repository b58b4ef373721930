#pragma once

#include <string>

// Whether the address is a configured NTP server. The two "any" addresses switch NTP off.
inline bool isConfiguredServer(const std::string& address) {
  return !address.empty() && address != "0.0.0.0" && address != "::";
}
