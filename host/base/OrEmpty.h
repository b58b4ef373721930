#pragma once

namespace host {

// The text, or an empty one for null.
constexpr const char* orEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

}  // namespace host
