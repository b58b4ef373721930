#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "apps/OptionParser.h"
#include "telephone/HostRequests.h"

namespace panel {

// The command line of clockpanel.
struct PanelOptions {
  std::vector<HostSockets> hosts;
  std::string listen = "127.0.0.1:0";  // 0: any free port
  std::uint16_t timeServer = 0;        // UDP port; 0: none
};

// The table of options. Values go to `options`, which outlives the parser.
[[nodiscard]] host::OptionParser panelOptionParser(PanelOptions& options,
                                                   const std::filesystem::path& defaultSocket);

}  // namespace panel
