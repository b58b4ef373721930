#pragma once

#include <boost/asio/generic/stream_protocol.hpp>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

#include "server/Feed.h"
#include "server/Http.h"

namespace panel {

// Limits for each client, which may be any program of this machine.
inline constexpr std::size_t kMostHead = 8192;                    // bytes
inline constexpr std::size_t kMostBody = std::size_t{1} << 20;    // bytes: a long scenario
inline constexpr std::size_t kMostUnread = std::size_t{1} << 20;  // bytes of events after its start
inline constexpr long kMostConnections = 256;

// What is served. Called on the server's thread; nothing blocks. Lives longer than the server.
struct Site {
  // Refuses a request before its body is read: empty, or the answer.
  std::function<std::optional<Response>(const Request& head)> refusal;
  std::function<void(const Request& request, Answer answer)> answer;  // now or later
  std::function<void(Feed::Page page)> follow;                        // of GET /feed
};

// Each open connection holds one, so that its owner can count them.
using Place = std::shared_ptr<const void>;

// Serves one connection until it ends or breaks a limit. Thread: the server's.
void serve(boost::asio::generic::stream_protocol::socket socket, const Site& site, Place place);

}  // namespace panel
