#include "base/Version.h"

namespace host {

const char* const kVersion = CLOCK_VERSION;

}  // namespace host
