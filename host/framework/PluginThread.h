#pragma once

namespace host {

// Whether the calling thread is one of those that the plug-in has spawned (Threader): its listener.
[[nodiscard]] bool onPluginThread();

}  // namespace host
