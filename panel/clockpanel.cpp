#include <boost/asio/posix/stream_descriptor.hpp>
#include <exception>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "Panel.h"
#include "PanelOptions.h"
#include "base/DefaultPaths.h"
#include "base/PrintableText.h"
#include "base/ProgramStart.h"
#include "base/TerminationSignals.h"
#include "remote/SocketAddress.h"
#include "server/Listener.h"
#include "verbs/UsageError.h"

namespace panel {
namespace {

// Serves pages until a signal ends it.
void serve(const PanelOptions& options) {
  host::TerminationSignals signals;
  boost::asio::io_context context;
  Panel panel(context, options.hosts, options.timeServer);
  const Site site{
      [&panel](const Request& head) { return panel.refusal(head); },
      [&panel](const Request& request, const Answer& answer) { panel.answer(request, answer); },
      [&panel](Feed::Page page) { panel.follow(std::move(page)); }};
  Listener listener(context, options.listen, site);
  const Access access(listener.authority(), newToken());
  std::cout << access.address() << std::endl;
  panel.open(access);
  listener.start();
  boost::asio::posix::stream_descriptor signal(context, signals.descriptor());
  signal.async_wait(boost::asio::posix::stream_descriptor::wait_read,
                    [&context](const boost::system::error_code&) { context.stop(); });
  context.run();
  static_cast<void>(signal.release());
}

int run(const std::vector<std::string>& words) {
  PanelOptions options;
  const auto defaultSocket = host::defaultPaths().socket;
  host::OptionParser parser = panelOptionParser(options, defaultSocket);
  if (!parser.readToRun(words, std::cout)) return 0;
  if (options.hosts.empty()) {
    options.hosts.push_back({defaultSocket, host::controlSocketBeside(defaultSocket)});
  }
  serve(options);
  return 0;
}

}  // namespace
}  // namespace panel

int main(int argc, char** argv) {
  host::startProgram();
  try {
    return panel::run({argv + 1, argv + argc});
  } catch (const host::UsageError& error) {
    std::cerr << host::errorLine("clockpanel", error.what());
    return 2;
  } catch (const std::exception& error) {
    std::cerr << host::errorLine("clockpanel", error.what());
    return 1;
  }
}
