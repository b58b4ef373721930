#pragma once

#include <nlohmann/json_fwd.hpp>

namespace host {

// Control requests and replies. Members keep the order in which they were put in: people read them.
using Json = nlohmann::ordered_json;

}  // namespace host
