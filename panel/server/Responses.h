#pragma once

#include <string>

#include "server/Http.h"
#include "verbs/Json.h"

// The panel's responses, each with the headers that keep other pages out. Pure; thread: any.
namespace panel {

[[nodiscard]] Response responseOf(boost::beast::http::status status, const std::string& type,
                                  std::string body);
[[nodiscard]] Response lineResponse(boost::beast::http::status status, const std::string& line);
[[nodiscard]] Response jsonResponse(const host::Json& json);
[[nodiscard]] Response refusedResponse(const std::string& why);  // {"ok": false, "error": why}

}  // namespace panel
