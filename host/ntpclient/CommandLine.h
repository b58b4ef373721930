#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>

namespace host::ntp {

// What the client gets from the service's command line.
struct Assignment {
  std::string server;  // a numeric address
  int family;          // AF_INET or AF_INET6, that of the address
  bool verbose;        // writes each step to standard error
};

inline constexpr long kRounds = 525600;                 // "-c": then the program ends
inline constexpr std::chrono::seconds kInterval{3600};  // "-i": from one round to the next
inline constexpr int kTries = 15;                       // "-n": in one round

inline constexpr const char* kUsage =
    "usage: ntpclient -s -c 525600 -i 3600 -n 15 -h ADDRESS [-6|-4] [-L]";

// words: the arguments after the program's name. Accepts exactly what kUsage says, in that order,
// with a numeric ADDRESS of the family that -6 or -4 selects. Else empty.
[[nodiscard]] std::optional<Assignment> parseCommandLine(std::span<char* const> words);

}  // namespace host::ntp
