#pragma once

namespace host {

/** A decimal digit of ASCII, whatever the locale. */
constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace host
