// The lookup of names, for a device that knows those of the table and asks nobody.

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "platform/BoundedLookup.h"
#include "simulation/Addresses.h"
#include "simulation/world/DeviceParts.h"

namespace {

// What the C library's resolver hands out and takes back.
struct FoundAddress {
  addrinfo info{};  // first: by its address the whole is freed
  sockaddr_storage storage{};
};

template <class Socket>
void keep(FoundAddress& found, const Socket& address) {
  static_assert(sizeof address <= sizeof found.storage);
  std::memcpy(&found.storage, &address, sizeof address);
  found.info.ai_addrlen = sizeof address;
}

void keepNumeric(FoundAddress& found, const std::string& text) {
  sockaddr_in ipv4{};
  sockaddr_in6 ipv6{};
  ipv4.sin_family = AF_INET;
  ipv6.sin6_family = AF_INET6;
  if (inet_pton(AF_INET, text.c_str(), &ipv4.sin_addr) == 1) keep(found, ipv4);
  if (inet_pton(AF_INET6, text.c_str(), &ipv6.sin6_addr) == 1) keep(found, ipv6);
  found.info.ai_family = found.storage.ss_family;
  found.info.ai_addr = reinterpret_cast<sockaddr*>(&found.storage);
}

bool isWanted(const FoundAddress& found, const addrinfo* wanted) {
  if (found.info.ai_family == AF_UNSPEC) return false;
  if (wanted == nullptr || wanted->ai_family == AF_UNSPEC) return true;
  return wanted->ai_family == found.info.ai_family;
}

}  // namespace

// In place: an answer never takes time here, and a life is the same each time.
std::optional<std::string> host::boundedLookup(const std::string& /*name*/,
                                               std::chrono::milliseconds /*limit*/,
                                               Resolve resolve) {
  try {
    return resolve();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

extern "C" {

int getaddrinfo(const char* name, const char* /*service*/, const addrinfo* wanted,
                addrinfo** result) {
  simulation::DeviceParts& parts = simulation::deviceParts();
  parts.journal->add(std::string("looks up ") + name);
  if (parts.lookupsFail) return EAI_AGAIN;
  auto found = std::make_unique<FoundAddress>();
  keepNumeric(*found, std::string(simulation::addressOf(name).resolved));
  if (!isWanted(*found, wanted)) return EAI_NONAME;
  *result = &found.release()->info;
  return 0;
}

void freeaddrinfo(addrinfo* info) noexcept {
  delete reinterpret_cast<FoundAddress*>(info);
}
}
