#include "PanelOptions.h"

#include <limits>

#include "remote/SocketAddress.h"

namespace panel {
namespace {

using host::ExitStatus;
using host::OptionParser;

constexpr ExitStatus kStatuses[] = {
    {0, "ended by SIGINT or SIGTERM"},
    {1, "the panel could not listen at its address"},
    {2, "wrong command line"},
};

constexpr std::size_t kMostHosts = 16;  // a page shows them side by side

std::string takeSocket(const std::string& path, PanelOptions& options) {
  if (std::string error = host::checkPath(path); !error.empty()) return error;
  if (options.hosts.size() == kMostHosts) return "a panel shows at most 16 telephones";
  options.hosts.push_back({path, host::controlSocketBeside(path)});
  return "";
}

}  // namespace

OptionParser panelOptionParser(PanelOptions& options, const std::filesystem::path& defaultSocket) {
  OptionParser parser({"clockpanel", "Shows running telephones in a browser.", "", kStatuses});
  parser.add({"--socket", "FILE ...", "Call sockets of the hosts",
              [&options](const std::string& path) { return takeSocket(path, options); },
              defaultSocket.string(), true});
  parser.add({"--listen", "ADDRESS:PORT|FILE",
              "Loopback address, or path of a Unix socket, for browsers",
              [&options](const std::string& place) {
                options.listen = place;
                return std::string();
              },
              options.listen});
  parser
      .addNumber("--time-server", "PORT",
                 "Time server at this loopback UDP port, which the page commands; a host uses it "
                 "with the environment variable NTPCLIENT_PORT",
                 options.timeServer, 1, std::numeric_limits<std::uint16_t>::max())
      .shownDefault = "none";
  return parser;
}

}  // namespace panel
