#include "NetHelper.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "ClientUtils.h"
#include "base/Ascii.h"
#include "framework/BoundedLookup.h"

namespace {

// The framework thread waits that long. A working name server answers much sooner.
constexpr std::chrono::seconds kLookupLimit{1};
constexpr int kNoAddress = 0;
constexpr int kIpv6 = 1;
constexpr int kIpv4 = 2;

using Address = std::optional<std::string>;  // numeric text

// The canonical form of `text` if it is an address of the family.
Address numericAddress(int family, const std::string& text) {
  unsigned char bytes[sizeof(in6_addr)];
  char canonical[INET6_ADDRSTRLEN];
  if (text.find('\0') != std::string::npos) return std::nullopt;
  if (inet_pton(family, text.c_str(), bytes) != 1) return std::nullopt;
  if (inet_ntop(family, bytes, canonical, sizeof canonical) == nullptr) return std::nullopt;
  return canonical;
}

Address numericText(const sockaddr& address) {
  char text[INET6_ADDRSTRLEN];
  const void* bytes = nullptr;
  sockaddr_in ipv4{};
  sockaddr_in6 ipv6{};
  if (address.sa_family == AF_INET) {
    std::memcpy(&ipv4, &address, sizeof ipv4);
    bytes = &ipv4.sin_addr;
  } else if (address.sa_family == AF_INET6) {
    std::memcpy(&ipv6, &address, sizeof ipv6);
    bytes = &ipv6.sin6_addr;
  }
  if (bytes == nullptr) return std::nullopt;
  if (inet_ntop(address.sa_family, bytes, text, sizeof text) == nullptr) return std::nullopt;
  return text;
}

// Asks the resolver, without a time limit. Throws when no name server has answered.
Address resolvedAddress(const std::string& name, int family) {
  addrinfo wanted{};
  wanted.ai_family = family == 0 ? AF_UNSPEC : family;
  wanted.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(name.c_str(), nullptr, &wanted, &found);
  if (error == EAI_AGAIN) throw std::runtime_error(gai_strerror(error));
  if (error != 0) return std::nullopt;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
  return found->ai_addr == nullptr ? std::nullopt : numericText(*found->ai_addr);
}

Address lookUp(const std::string& name, int family) {
  for (const int numeric : {AF_INET, AF_INET6}) {
    const Address address = numericAddress(numeric, name);
    if (!address) continue;
    return family == 0 || family == numeric ? address : std::nullopt;
  }
  if (!ClientUtils::validGlobalHostname(name)) return std::nullopt;
  const std::string question = name + (family == 0         ? ""
                                       : family == AF_INET ? " (IPv4)"
                                                           : " (IPv6)");
  return host::boundedLookup(question, kLookupLimit, [=] { return resolvedAddress(name, family); });
}

bool isPort(std::string_view text) {
  if (text.empty() || text.size() > 5 || !std::all_of(text.begin(), text.end(), host::isDigit)) {
    return false;
  }
  const int number = ClientUtils::stoi(std::string(text));
  return number >= 1 && number <= 65535;
}

// The text in the brackets with which `text` begins; `after` gets the rest.
std::optional<std::string> bracketed(const std::string& text, std::string& after) {
  const std::size_t end = text.find(']');
  if (text.empty() || text.front() != '[' || end == std::string::npos) return std::nullopt;
  after = text.substr(end + 1);
  return text.substr(1, end - 1);
}

bool isPortSuffix(std::string_view text) {
  return !text.empty() && text.front() == ':' && isPort(text.substr(1));
}

}  // namespace

bool NetHelper::dnsLookup(const char* name, char* buffer, int size, int family) {
  if (name == nullptr || buffer == nullptr || size <= 0) return false;
  if (family != 0 && family != AF_INET && family != AF_INET6) return false;
  const Address address = lookUp(name, family);
  if (!address || address->size() >= static_cast<std::size_t>(size)) return false;
  std::memcpy(buffer, address->c_str(), address->size() + 1);
  return true;
}

int NetHelper::verifyIpAddress(const std::string& text, bool allowPort) {
  if (numericAddress(AF_INET, text)) return kIpv4;
  if (numericAddress(AF_INET6, text)) return kIpv6;
  std::string after;
  if (const auto inside = bracketed(text, after)) {
    const bool ends = after.empty() || (allowPort && isPortSuffix(after));
    return ends && numericAddress(AF_INET6, *inside) ? kIpv6 : kNoAddress;
  }
  const std::size_t colon = text.find(':');
  if (!allowPort || colon == std::string::npos) return kNoAddress;
  const bool ipv4WithPort = isPortSuffix(std::string_view(text).substr(colon)) &&
                            numericAddress(AF_INET, text.substr(0, colon));
  return ipv4WithPort ? kIpv4 : kNoAddress;
}
