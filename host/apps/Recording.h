#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <iosfwd>

#include "verbs/Json.h"

namespace host {

class RemoteClient;

// `clockctl record`: writes what is done to a telephone into the file of the request (see
// readRecord), until SIGINT or SIGTERM, or as long as the request says. control: a client at the
// control socket; socket: the call socket. Prints "ready" on `err` once no later step is missed,
// and gives `print` a summary: steps, events. Then it replays the file, and comments out what does
// not replay. limit: how long to wait for a reply. Thread: its caller's. Failure: host::Error, also
// when the replay differed; HostGone when the host ended, and the file then holds what was done
// before.
void record(const Json& request, RemoteClient& control, const std::filesystem::path& socket,
            std::chrono::milliseconds limit, const std::function<void(const Json&)>& print,
            std::ostream& err);

}  // namespace host
