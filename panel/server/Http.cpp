#include "server/Http.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "verbs/JsonText.h"

namespace panel {
namespace {

// No script but the panel's own, and nothing from elsewhere.
constexpr const char* kContentPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

}  // namespace

namespace http = boost::beast::http;

Response responseOf(http::status status, const std::string& type, std::string body) {
  Response response(status, 11);
  response.set(http::field::content_type, type);
  response.set(http::field::cache_control, "no-store");
  response.set("Content-Security-Policy", kContentPolicy);
  response.set("X-Content-Type-Options", "nosniff");
  response.set("Referrer-Policy", "no-referrer");
  response.set("Cross-Origin-Resource-Policy", "same-origin");
  response.body() = std::move(body);
  return response;
}

Response lineResponse(http::status status, const std::string& line) {
  return responseOf(status, "text/plain; charset=utf-8", line + "\n");
}

Response jsonResponse(const host::Json& json) {
  return responseOf(http::status::ok, "application/json", host::jsonLine(json));
}

Response refusedResponse(const std::string& why) {
  return jsonResponse({{"ok", false}, {"error", why}});
}

}  // namespace panel
