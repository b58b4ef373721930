#pragma once

#include <string>

// Names and addresses. Thread: any.
class NetHelper {
 public:
  // Resolves `name`, a host name or a numeric address, and writes the numeric address as
  // null-terminated text into `buffer`. size: bytes of buffer, 46 holds every address; false if it
  // is too small. family: 0 for either, AF_INET or AF_INET6. Returns false, and leaves buffer
  // untouched, when `name` has no such address. Numeric addresses need no name server; lookups of
  // names time out after a second.
  static bool dnsLookup(const char* name, char* buffer, int size, int family);

  // 0: not a numeric address. 1: IPv6 (RFC 4291), also in brackets ("[::1]"). 2: IPv4 in four
  // decimal parts. allowPort: a ":port", 1-65535, may follow an IPv4 or a bracketed IPv6 address.
  static int verifyIpAddress(const std::string& text, bool allowPort);
};
