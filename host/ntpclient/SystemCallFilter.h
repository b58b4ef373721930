#pragma once

namespace host::ntp {

class SealedPath;

// From now on this program can do what the client needs, and nothing else: send and receive
// datagrams over IPv4 and IPv6, use the descriptors it has, and open the pipe for writing. Every
// other system call fails with EPERM, for good and for all threads.
// Returns the errno for which the system refused the filter, and then nothing has changed; else 0.
// A build with a sanitizer or with coverage has no filter, and nothing to say about it.
[[nodiscard]] int installSystemCallFilter(const SealedPath& pipe);

}  // namespace host::ntp
