#pragma once

#include <functional>
#include <string>

#include "base/Error.h"

// What the host's error said that ended this; empty when none did.
inline std::string errorOf(const std::function<void()>& body) {
  try {
    body();
  } catch (const host::Error& error) {
    return error.what();
  }
  return "";
}
