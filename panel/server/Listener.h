#pragma once

#include <boost/asio/basic_socket_acceptor.hpp>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>
#include <memory>
#include <string>
#include <variant>

#include "server/Site.h"

namespace panel {

// Accepts connections at a loopback address or a Unix socket, at most kMostConnections at a time;
// further ones are closed at once. Thread: the server's.
class Listener {
 public:
  // place: "127.0.0.1:8080", "[::1]:0" for any free port, or a path with a slash. A socket file is
  // for its owner only; one that no program listens at is replaced. Throws host::Error: no loopback
  // address, or it cannot be used.
  Listener(boost::asio::io_context& context, const std::string& place, Site& site);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  void start();

  // "127.0.0.1:8080" with the actual port; "localhost" for a Unix socket.
  [[nodiscard]] std::string authority() const;

 private:
  using Tcp = boost::asio::ip::tcp;
  using Local = boost::asio::local::stream_protocol;

  template <class Acceptor>
  void accept(Acceptor& acceptor);
  template <class Acceptor>
  void acceptLater(Acceptor& acceptor);

  Site& m_site;
  boost::asio::steady_timer m_pause;
  std::string m_socketFile;  // empty: TCP
  std::variant<Tcp::acceptor, Local::acceptor> m_acceptor;
  const std::shared_ptr<std::size_t> m_count = std::make_shared<std::size_t>(0);
};

}  // namespace panel
