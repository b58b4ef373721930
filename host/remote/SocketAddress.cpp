#include "remote/SocketAddress.h"

#include <algorithm>

#include "base/Error.h"

namespace host {

SocketAddress::SocketAddress(const std::filesystem::path& file) {
  const std::string& name = file.native();
  if (name.empty() || name.size() >= sizeof m_address.sun_path) {
    throw Error("socket " + name + ": the path must have 1 to " +
                std::to_string(sizeof m_address.sun_path - 1) + " bytes");
  }
  m_address.sun_family = AF_UNIX;
  std::copy(name.begin(), name.end(), m_address.sun_path);
}

const sockaddr* SocketAddress::get() const {
  return static_cast<const sockaddr*>(static_cast<const void*>(&m_address));
}

}  // namespace host
