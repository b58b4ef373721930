// The time server's address: an accepted address has a canonical form, and no accepted address or
// name can be taken for an option on a command line.

#include <algorithm>
#include <array>

#include "ClientUtils.h"
#include "NetHelper.h"
#include "fuzz/Property.h"

namespace {

using fuzz::hold;

constexpr int kNoAddress = 0;
constexpr int kIpv6 = 1;
constexpr int kIpv4 = 2;

std::string resolved(const std::string& text) {
  std::array<char, 46> buffer{};
  const bool found = NetHelper::dnsLookup(text.c_str(), buffer.data(), buffer.size(), 0);
  return found ? buffer.data() : "";
}

void holdAddress(const std::string& text, int kind) {
  hold(kind == kIpv4 || kind == kIpv6, "an address is IPv4 or IPv6", text);
  hold(text.find_first_not_of("0123456789abcdefABCDEF:.[]") == std::string::npos,
       "an address has only valid characters", text);
  const std::string canonical = resolved(text);
  if (text.front() == '[') return;
  hold(NetHelper::verifyIpAddress(canonical, false) == kind,
       "the resolved address is of the same kind", text);
  hold(resolved(canonical) == canonical, "the canonical form resolves to itself", canonical);
  hold(NetHelper::verifyIpAddress("[" + text + "]", false) == (kind == kIpv6 ? kIpv6 : kNoAddress),
       "brackets are for IPv6", text);
}

void holdName(const std::string& text) {
  const bool valid = std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
           c == '.';
  });
  hold(valid && text.size() <= 254, "a name has at most 254 bytes, all valid", text);
  hold(text.front() != '-' && text.front() != '.', "a name cannot be taken for an option", text);
}

// A text with a port is accepted if its part before the port is an address.
void holdPort(const std::string& text) {
  const int kind = NetHelper::verifyIpAddress(text, true);
  if (kind == kNoAddress || kind == NetHelper::verifyIpAddress(text, false)) return;
  const std::string address = text.substr(0, text.rfind(':'));
  hold(NetHelper::verifyIpAddress(address, false) == kind, "a port follows an address", text);
  const int port = ClientUtils::stoi(text.substr(text.rfind(':') + 1));
  hold(port >= 1 && port <= 65535, "a port is a number from 1 to 65535", text);
}

}  // namespace

void fuzz::property(std::string_view input) {
  const std::string text(input);
  const int kind = NetHelper::verifyIpAddress(text, false);
  const bool name = ClientUtils::validGlobalHostname(text);
  if (kind != kNoAddress) holdAddress(text, kind);
  if (name) holdName(text);
  hold(!name || kind == kNoAddress, "no text is both an address and a name", text);
  holdPort(text);
}
