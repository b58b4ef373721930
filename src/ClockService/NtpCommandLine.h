#pragma once

#include <array>
#include <cstddef>

// The command line of the external NTP client, ready for a process launch.
// Owner: its creator. The address text must outlive the object. Pure.
class NtpCommandLine {
 public:
  static constexpr std::size_t kEntries = 13;  // the last one is always null

  // address: numeric. addressKind: 1 is IPv6, 2 is IPv4, as NetHelper::verifyIpAddress returns it;
  // with another kind the client chooses. traced: the client logs each exchange.
  NtpCommandLine(const char* address, int addressKind, bool traced);

  // Null-terminated.
  [[nodiscard]] const std::array<const char*, kEntries>& arguments() const { return m_arguments; }

  // The entry as text, "NULL" for a null entry. index: 0-12.
  [[nodiscard]] const char* textAt(std::size_t index) const;

 private:
  std::array<const char*, kEntries> m_arguments{};
};
