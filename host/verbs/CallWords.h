#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Method.h"

// Remote calls as people write them. Pure; thread: any.
namespace host {

// NAME [":int" | ":string"] "=" VALUE. Without a type the value is an int when it is a decimal
// integer of 32 bits, else a string. Throws UsageError for anything else.
[[nodiscard]] Parameter parseArgument(std::string_view word);

// A call of `method` with the arguments in their order. The method may be unknown.
[[nodiscard]] Method callOf(const std::string& method, std::span<const std::string> arguments);

[[nodiscard]] std::optional<int> parseInteger(std::string_view text);  // decimal, 32 bits

// The value as text: decimal, "true" or "false", the string itself.
[[nodiscard]] std::string valueText(const Parameter& parameter);

// "NAME=VALUE NAME=VALUE", in order.
[[nodiscard]] std::string parametersText(const Method& method);

}  // namespace host
