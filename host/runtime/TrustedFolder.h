#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <functional>
#include <string>

#include "base/Descriptor.h"

namespace host {

// Why a folder of this status cannot be trusted: a user other than root and `user` could replace a
// folder in it. Empty: it can be trusted. A group with write permission must be root's or `group`,
// the user's private group. In a sticky folder all may write, because only owners can replace
// entries there.
[[nodiscard]] std::string reasonToDistrust(const struct stat& folder, uid_t user, gid_t group);

// Opens a folder name by name from "/" on, and checks each folder through its descriptor and not by
// its path, so that nothing can be replaced between check and use. Creates missing folders among
// the last `mostCreated` names. Follows links that belong to root or to this process's user. Calls
// `each` with the descriptor of every folder of the path that passed the check.
// Failure: throws Error, which names the folder.
using EachFolder = std::function<void(int folder)>;
[[nodiscard]] Descriptor openTrustedFolder(const std::string& path, std::size_t mostCreated,
                                           const EachFolder& each);

}  // namespace host
