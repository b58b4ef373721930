#pragma once

#include <boost/asio/basic_socket_acceptor.hpp>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <memory>
#include <optional>
#include <string>

#include "remote/SocketFile.h"
#include "server/Connection.h"

namespace panel {

// Accepts connections at a loopback address or a Unix socket, at most kMostConnections at a time;
// further ones are closed at once. Thread: the server's.
class Listener {
 public:
  // place: "127.0.0.1:8080", "[::1]:0" for any free port, or a path with a slash, for a SocketFile.
  // Throws host::Error: no loopback address, or it cannot be used.
  Listener(boost::asio::io_context& context, const std::string& place, const Site& site);

  void start();

  // "127.0.0.1:8080" with the actual port; "localhost" for a Unix socket.
  [[nodiscard]] const std::string& authority() const { return m_authority; }

 private:
  using Protocol = boost::asio::generic::stream_protocol;

  const Site& m_site;
  boost::asio::steady_timer m_pause;
  std::optional<host::SocketFile> m_file;
  boost::asio::basic_socket_acceptor<Protocol> m_acceptor;
  std::string m_authority = "localhost";
  const Place m_place = std::make_shared<char>();
};

}  // namespace panel
