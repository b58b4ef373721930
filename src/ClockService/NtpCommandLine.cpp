#include "NtpCommandLine.h"

#include "DevicePaths.h"

namespace {

constexpr std::size_t kAddressIndex = 9;

const char* familyOption(int addressKind) {
  switch (addressKind) {
    case 1:
      return "-6";
    case 2:
      return "-4";
    default:
      return nullptr;
  }
}

}  // namespace

// Set the clock (-s), 525600 times (-c), hourly (-i), with at most 15 tries each (-n).
NtpCommandLine::NtpCommandLine(const char* address, int addressKind, bool traced)
    : m_arguments{DevicePaths::kNtpClientProgram,
                  "-s",
                  "-c",
                  "525600",
                  "-i",
                  "3600",
                  "-n",
                  "15",
                  "-h",
                  address} {
  std::size_t next = kAddressIndex + 1;
  if (const char* const family = familyOption(addressKind)) m_arguments[next++] = family;
  if (traced) m_arguments[next] = "-L";
}

const char* NtpCommandLine::textAt(std::size_t index) const {
  const char* const argument = m_arguments[index];
  return argument != nullptr ? argument : "NULL";
}
