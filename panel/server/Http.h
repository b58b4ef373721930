#pragma once

#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <boost/beast/http.hpp>
#include <functional>
#include <string>

#include "verbs/Json.h"

namespace panel {

using Request = boost::beast::http::request<boost::beast::http::string_body>;
using Response = boost::beast::http::response<boost::beast::http::string_body>;

// A connection over TCP or a Unix socket.
using Stream = boost::beast::basic_stream<boost::asio::generic::stream_protocol>;

// Sends the answer to a request. Call once, on the server's thread.
using Answer = std::function<void(Response)>;

// Responses, each with the headers that keep other pages out. Pure; thread: any.
[[nodiscard]] Response responseOf(boost::beast::http::status status, const std::string& type,
                                  std::string body);
[[nodiscard]] Response lineResponse(boost::beast::http::status status, const std::string& line);
[[nodiscard]] Response jsonResponse(const host::Json& json);
[[nodiscard]] Response refusedResponse(const std::string& why);  // {"ok": false, "error": why}

}  // namespace panel
