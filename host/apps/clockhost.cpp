#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "apps/ClockHost.h"
#include "apps/HostOptions.h"
#include "control/UsageError.h"
#include "platform/ShownText.h"
#include "runtime/DefaultPaths.h"

namespace {

int say(const std::exception& error, int status) {
  std::cerr << host::errorLine("clockhost", error.what());
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  // Before any thread: the service sets TZ again and again, and then finds its place taken already.
  ::setenv("TZ", "UTC0", 1);
  ::tzset();
  std::signal(SIGPIPE, SIG_IGN);  // a client that hangs up is no reason to end
  try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto options = host::readHostOptions(words, host::defaultPaths(), std::cout);
    return options ? host::runClockHost(*options) : 0;
  } catch (const host::UsageError& error) {
    return say(error, 2);
  } catch (const std::exception& error) {
    return say(error, 1);
  }
}
