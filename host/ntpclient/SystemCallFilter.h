#pragma once

namespace host::ntp {

class SealedPath;

// From now on this program can do what the client needs, and nothing else: send and receive
// datagrams over IPv4 and IPv6, use its open descriptors, and open the pipe for writing. Every
// other system call fails with EPERM, permanently and in all threads. Returns 0, or the errno with
// which the system refused the filter; then nothing has changed. Builds with a sanitizer or with
// coverage have no filter and return 0.
[[nodiscard]] int installSystemCallFilter(const SealedPath& pipe);

}  // namespace host::ntp
