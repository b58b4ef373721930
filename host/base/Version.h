#pragma once

namespace host {

// The version of this tree, as CMakeLists.txt names it: "0.1.0".
extern const char* const kVersion;

}  // namespace host
