#pragma once

#include <string>

// Whether a server address stands for a configured NTP server: the two "any" addresses do not.
inline bool isConfiguredServer(const std::string& address) {
  return !address.empty() && address != "0.0.0.0" && address != "::";
}
