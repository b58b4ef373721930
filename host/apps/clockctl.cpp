#include <csignal>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "control/ClockCtl.h"
#include "platform/ShownText.h"
#include "runtime/DefaultPaths.h"

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // a host that hangs up, a reader that has seen enough
  try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    return host::runClockCtl(words, host::defaultPaths().socket, std::cout, std::cerr);
  } catch (const std::exception& error) {
    std::cerr << host::errorLine("clockctl", error.what());
    return 1;
  }
}
