#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>

namespace host::ntp {

// What the service asks of its client program.
struct Assignment {
  std::string server;  // a numeric address
  int family;          // AF_INET or AF_INET6, that of the address
  bool verbose;        // every step is told, not the refusals alone
};

inline constexpr long kRounds = 525600;                 // "-c": then the program ends
inline constexpr std::chrono::seconds kInterval{3600};  // "-i": from one round to the next
inline constexpr int kTries = 15;                       // "-n": in one round

inline constexpr const char* kUsage =
    "usage: ntpclient -s -c 525600 -i 3600 -n 15 -h ADDRESS [-6|-4] [-L]";

// words: the arguments after the program's name. Exactly what kUsage says, in that order, ADDRESS
// numeric and of the family that -6 or -4 names. Nothing for anything else.
[[nodiscard]] std::optional<Assignment> parseCommandLine(std::span<char* const> words);

}  // namespace host::ntp
