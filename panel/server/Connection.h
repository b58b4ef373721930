#pragma once

#include <boost/asio/generic/stream_protocol.hpp>
#include <cstddef>

#include "server/Site.h"

namespace panel {

// Limits for each client, which may be any program of this machine.
inline constexpr std::size_t kMostHead = 8192;                    // bytes
inline constexpr std::size_t kMostBody = std::size_t{1} << 20;    // bytes: a long scenario
inline constexpr std::size_t kMostUnread = std::size_t{1} << 20;  // bytes of a page's events
inline constexpr std::size_t kMostConnections = 256;

// Serves one connection until it ends or breaks a limit. count: of the open connections, while the
// connection is one of them. Thread: the server's.
void serve(boost::asio::generic::stream_protocol::socket socket, Site& site,
           std::shared_ptr<std::size_t> count);

}  // namespace panel
