#pragma once

namespace host {

/** The text, or an empty one where there is none. */
constexpr const char* orEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

}  // namespace host
