#pragma once

#include <string>

// Names and addresses. Thread: any.
class NetHelper {
 public:
  // Resolves `name`, a host name or a numeric address, and writes the numeric address as
  // null-terminated text into `buffer`. size: bytes of buffer, 46 holds every address.
  // family: 0 either, else AF_INET or AF_INET6. False, and buffer untouched, when it has no
  // address. A numeric address never asks a name server; a name's lookup times out after a second.
  static bool dnsLookup(const char* name, char* buffer, int size, int family);

  // 0: not a numeric address. 1: IPv6 (RFC 4291), also in brackets ("[::1]"). 2: IPv4 in four
  // decimal parts. allowPort: a ":port" may follow an IPv4 or a bracketed IPv6 address.
  static int verifyIpAddress(const std::string& text, bool allowPort);
};
