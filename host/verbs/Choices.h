#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

// Words of which one is chosen. Pure; thread: any.
namespace host {

// "a, b or c"
[[nodiscard]] std::string alternatives(std::span<const std::string_view> words);

// The words of a list in lower case, `up|down`, which are all that is accepted; empty for others.
[[nodiscard]] std::vector<std::string_view> listedValues(std::string_view usage);

}  // namespace host
