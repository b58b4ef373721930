#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <functional>
#include <string>

#include "base/Descriptor.h"

namespace host {

// Why a folder of this status cannot be trusted: somebody other than root and this process's user
// could put another folder into the place of one in it. Empty: it can be trusted. A group that may
// write must be root's or this process's own, the private group of its user. In a sticky folder
// everybody may write, since only owners can replace what is there.
[[nodiscard]] std::string reasonToDistrust(const struct stat& folder, uid_t user, gid_t group);

// Opens a folder from the system's root on, one name after the other, and looks at each folder on
// the way itself, not at its path, so that nothing can be exchanged in between. Of what is missing,
// the last `mostMade` names are made. A link on the way is followed when it is root's or this
// process's user's. `each` gets the descriptor of every folder on the way, as soon as it is
// trusted. Failure: throws Error, which names the folder.
using EachFolder = std::function<void(int folder)>;
[[nodiscard]] Descriptor openTrustedFolder(const std::string& path, std::size_t mostMade,
                                           const EachFolder& each);

}  // namespace host
