#pragma once

#include <sys/types.h>

#include <filesystem>

namespace host {

// Files and folders that are nobody's but their owner's: settings hold a shared secret.

constexpr mode_t kModeBits = 07777;

// Makes a folder of mode 0700 where there is nothing; those above it get the usual mode. An empty
// path is the present folder. Throws host::Error.
void makeOwnFolder(const std::filesystem::path& path);

// Takes from a file or folder the permissions beyond `most`, and tells so in one log line; those of
// another user's it leaves, and tells that. All else, and what is missing, is left alone.
void tighten(const std::filesystem::path& path, mode_t most);

// The same for a file that is to be opened: 0600 at most. Throws host::Error for whatever else is
// at the path, or at the end of a link there: whoever opens a named pipe waits for a writer.
void tightenFile(const std::filesystem::path& path);

}  // namespace host
