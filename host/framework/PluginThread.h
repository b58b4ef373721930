#pragma once

namespace host {

// Whether the plug-in spawned the calling thread (Threader), such as its listener.
[[nodiscard]] bool onPluginThread();

}  // namespace host
