#pragma once

#include <sys/types.h>

#include <filesystem>

namespace host {

// Logs one line (level 3) when the members of a group cannot reach a socket's file because a folder
// on the path grants access neither to the group nor to others.
void tellClosedWay(const std::filesystem::path& file, gid_t group);

}  // namespace host
