#pragma once

#include "verbs/Json.h"

class Method;

namespace host {

// The parameters of a method, {NAME: VALUE, ...}, each with its own type. Pure; thread: any.
[[nodiscard]] Json parametersJson(const Method& method);

}  // namespace host
