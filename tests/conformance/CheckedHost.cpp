// The host under the tests for every platform.
#include "conformance/ConnectedPlatform.h"

namespace conformance {

std::unique_ptr<Platform> makePlatform() {
  return std::make_unique<host::ConnectedPlatform>();
}

std::vector<LeftOut> leftOut() {
  return {};
}

}  // namespace conformance
