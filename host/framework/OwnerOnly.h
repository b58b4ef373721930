#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace host {

// Files and folders for their owner only, because the settings hold a shared secret.

constexpr mode_t kModeBits = 07777;

// Creates a missing folder with mode 0700; missing parents get the usual mode. An empty path is the
// current folder. Throws host::Error.
void makeOwnFolder(const std::filesystem::path& path);

// Removes the permissions of a file or folder beyond `most`, with one log line. The permissions of
// another user's file stay, also with a log line. Other kinds of files and missing ones are
// ignored.
void tighten(const std::string& path, mode_t most);

// The same for a file that will be opened: 0600 at most. Throws host::Error if the path, or the
// target of a link there, is not a regular file: opening a named pipe would wait for a writer.
void tightenFile(const std::string& path);

}  // namespace host
