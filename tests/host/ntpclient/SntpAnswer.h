#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace host::ntp {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint32_t k1970 = 2208988800;     // seconds since 1900
inline constexpr std::uint32_t kTime = 1'780'000'000;  // of a server, seconds since 1970

inline void putWord(Bytes& packet, std::size_t at, std::uint32_t number) {
  for (std::size_t i = 0; i < 4; ++i) {
    packet[at + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
  }
}

// A server's good packet. time: of receiving and of sending, seconds since 1970.
inline Bytes answerTo(std::uint64_t nonce, std::uint32_t time) {
  Bytes packet(48, 0);
  packet[0] = 4 << 3 | 4;  // no leap second, version 4, server
  packet[1] = 2;
  putWord(packet, 4, 0x00000800);
  putWord(packet, 8, 0x00000400);
  putWord(packet, 12, 0x7f000001);
  putWord(packet, 24, static_cast<std::uint32_t>(nonce >> 32));
  putWord(packet, 28, static_cast<std::uint32_t>(nonce));
  for (const std::size_t at : {std::size_t{32}, std::size_t{40}}) putWord(packet, at, time + k1970);
  return packet;
}

inline Bytes kissOfDeath(std::uint64_t nonce, std::string_view code) {
  Bytes packet = answerTo(nonce, 0);
  packet[0] |= 3 << 6;
  packet[1] = 0;
  for (std::size_t i = 0; i < 4; ++i) packet[12 + i] = static_cast<std::uint8_t>(code[i]);
  return packet;
}

inline std::uint64_t nonceOf(const Bytes& request) {
  std::uint64_t nonce = 0;
  for (std::size_t i = 40; i < 48; ++i) nonce = nonce << 8 | request.at(i);
  return nonce;
}

}  // namespace host::ntp
