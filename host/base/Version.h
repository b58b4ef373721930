#pragma once

namespace host {

// The version of this tree, as CMakeLists.txt names it.
extern const char* const kVersion;

}  // namespace host
