#pragma once

#include <string>

namespace host::ntp {

class SealedPath;

// From now on this program can do what the client needs, and nothing else: send and receive
// datagrams over IPv4 and IPv6, use the descriptors it has, and open the pipe for writing. Every
// other system call fails with EPERM, for good and for all threads.
// Returns why the system refused the filter, and then nothing has changed; else an empty text. A
// build with a sanitizer or with coverage has no filter, and nothing to say about it.
[[nodiscard]] std::string installSystemCallFilter(const SealedPath& pipe);

}  // namespace host::ntp
