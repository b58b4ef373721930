#pragma once

#include <array>
#include <string_view>

namespace simulation {

enum class AddressKind { name, ipv4, ipv6, ipv6InBrackets, wrong };

struct Address {
  std::string_view text;
  AddressKind kind;
  std::string_view resolved{};  // of a name: its address, a row of its own; none if nobody knows it
};

// What lives enter as the NTP server, and what each is.
inline constexpr std::array<Address, 21> kAddresses{{
    {"", AddressKind::wrong},
    {"0.0.0.0", AddressKind::ipv4},
    {"::", AddressKind::ipv6},
    {"192.0.2.1", AddressKind::ipv4},
    {"198.51.100.255", AddressKind::ipv4},
    {"127.0.0.1", AddressKind::ipv4},
    {"2001:db8::1", AddressKind::ipv6},
    {"::1", AddressKind::ipv6},
    {"2001:db8:1:2:3:4:5:6", AddressKind::ipv6},
    {"[2001:db8::1]", AddressKind::ipv6InBrackets},
    {"[::]", AddressKind::ipv6InBrackets},
    {"256.0.2.1", AddressKind::wrong},
    {"192.0.2", AddressKind::wrong},
    {"no such host", AddressKind::wrong},
    {"-ntp.example", AddressKind::wrong},
    {"2001:db8:::1", AddressKind::wrong},
    {"ntp.example", AddressKind::name, "198.51.100.255"},
    {"timeserver", AddressKind::name, "192.0.2.1"},
    {"ntp6.example", AddressKind::name, "2001:db8::1"},
    {"far-away.ntp6.example.", AddressKind::name, "2001:db8:1:2:3:4:5:6"},
    {"gone.example", AddressKind::name},
}};

[[nodiscard]] constexpr Address addressOf(std::string_view text) {
  for (const Address& address : kAddresses) {
    if (address.text == text) return address;
  }
  return {text, AddressKind::wrong};
}

[[nodiscard]] constexpr AddressKind kindOf(std::string_view text) {
  return addressOf(text).kind;
}

}  // namespace simulation
