#pragma once

#include "conformance/HostPlatform.h"

namespace host {

// The settings and the security log of the host, in its databases.
std::unique_ptr<Stores> openStoresInFiles(const std::filesystem::path& folder);

}  // namespace host
