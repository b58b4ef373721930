#pragma once

#include <string>

#include "verbs/Json.h"

namespace host {

// The answer to `upcoming` as a drawing in SVG: the local offset from UTC over a year, with each
// change marked. Throws Json::exception or Error when the answer has no such offsets. Pure; thread:
// any.
[[nodiscard]] std::string offsetPlot(const Json& answer);

}  // namespace host
