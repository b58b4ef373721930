#pragma once

#include "verbs/Json.h"

namespace host {

struct ManagementKey;

// The answer to `methods` or `events`: {"methods": [ROW, ...]}, or the row of the request's member
// "name". Throws UsageError for an unknown name. Pure; thread: any.
[[nodiscard]] Json catalogueAnswer(const Json& request);

// What the catalogue knows about a key, for the answer to `keys KEY`. Pure; thread: any.
[[nodiscard]] Json catalogueJson(const ManagementKey& key);

}  // namespace host
