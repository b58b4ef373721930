#pragma once

#include <functional>
#include <string>

#include "base/Error.h"

// The text of the host::Error that the body throws; empty when it throws none.
inline std::string errorOf(const std::function<void()>& body) {
  try {
    body();
  } catch (const host::Error& error) {
    return error.what();
  }
  return "";
}
