#pragma once

#include <sys/types.h>

#include <filesystem>

namespace host {

// Files and folders that are nobody's but their owner's: settings hold a shared secret.

constexpr mode_t kModeBits = 07777;

// Makes a folder of mode 0700 where there is nothing; those above it get the usual mode. An empty
// path is the present folder. Throws host::Error.
void makeOwnFolder(const std::filesystem::path& path);

// Takes from a file or folder the permissions beyond `most`, and tells so in one log line. Links
// and what is missing are left alone.
void tighten(const std::filesystem::path& path, mode_t most);

}  // namespace host
