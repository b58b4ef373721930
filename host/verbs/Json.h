#pragma once

#include <nlohmann/json_fwd.hpp>

namespace host {

// Control requests and replies. Members keep their order, because people read them.
using Json = nlohmann::ordered_json;

}  // namespace host
