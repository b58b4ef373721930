#pragma once

#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <boost/beast/http.hpp>
#include <functional>
#include <string>

namespace panel {

using Request = boost::beast::http::request<boost::beast::http::string_body>;
using Response = boost::beast::http::response<boost::beast::http::string_body>;

// A connection over TCP or a Unix socket.
using Stream = boost::beast::basic_stream<boost::asio::generic::stream_protocol>;

// Sends the answer to a request. Call once, on the server's thread.
using Answer = std::function<void(Response)>;

}  // namespace panel
