#pragma once

#include <filesystem>

#include "remote/Descriptor.h"

namespace bench {

// A socket that listens at the file. Throws std::system_error.
[[nodiscard]] host::Descriptor listenAt(const std::filesystem::path& file);

// The next client. Throws std::system_error.
[[nodiscard]] host::Descriptor acceptFrom(const host::Descriptor& listener);

}  // namespace bench
