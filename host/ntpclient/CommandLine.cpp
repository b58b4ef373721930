#include "ntpclient/CommandLine.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cstddef>
#include <string_view>

namespace host::ntp {
namespace {

constexpr std::string_view kFixedWords[] = {"-s", "-c", "525600", "-i", "3600", "-n", "15", "-h"};
constexpr std::size_t kAddress = std::size(kFixedWords);

// AF_INET, AF_INET6, or AF_UNSPEC when it is not a numeric address of the wanted family.
int familyOf(const char* address, int wanted) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  hints.ai_family = wanted;
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(address, nullptr, &hints, &found) != 0) return AF_UNSPEC;
  const int family = found->ai_family;
  ::freeaddrinfo(found);
  return family;
}

bool startsAsFixed(std::span<char* const> words) {
  if (words.size() <= kAddress) return false;
  for (std::size_t i = 0; i < kAddress; ++i) {
    if (words[i] != kFixedWords[i]) return false;
  }
  return true;
}

}  // namespace

std::optional<Assignment> parseCommandLine(std::span<char* const> words) {
  if (!startsAsFixed(words)) return std::nullopt;
  std::span<char* const> rest = words.subspan(kAddress + 1);
  const auto take = [&rest](std::string_view word) {
    if (rest.empty() || rest.front() != word) return false;
    rest = rest.subspan(1);
    return true;
  };
  const int wanted = take("-6") ? AF_INET6 : take("-4") ? AF_INET : AF_UNSPEC;
  const bool verbose = take("-L");
  const int family = familyOf(words[kAddress], wanted);
  if (!rest.empty() || family == AF_UNSPEC) return std::nullopt;
  return Assignment{words[kAddress], family, verbose};
}

}  // namespace host::ntp
