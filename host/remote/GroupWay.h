#pragma once

#include <sys/types.h>

#include <filesystem>

namespace host {

// Logs one line (level 3) when the members of a group cannot get to a socket's file: when the mode
// of a folder on the way lets them in neither as this group nor as others.
void tellClosedWay(const std::filesystem::path& file, gid_t group);

}  // namespace host
