#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "apps/ClockHost.h"
#include "apps/HostOptions.h"
#include "base/DefaultPaths.h"
#include "base/PrintableText.h"
#include "base/ProgramStart.h"
#include "base/StandardOutput.h"
#include "runtime/LogLine.h"
#include "verbs/UsageError.h"

namespace {

int fail(const std::exception& error, int status) {
  if (host::leadsToJournal(STDERR_FILENO)) std::cerr << "<3>";  // the priority of an error
  std::cerr << host::errorLine("clockhost", error.what());
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  host::startProgram();
  // One malloc arena for all threads: they allocate too little to contend for it.
  ::mallopt(M_ARENA_MAX, 1);
  // Keeps running when its terminal closes. SIGINT and SIGTERM shut it down cleanly.
  for (const int ignored : {SIGHUP, SIGUSR1, SIGUSR2}) std::signal(ignored, SIG_IGN);
  // The service sets TZ while other threads read the environment. A variable that exists before any
  // thread is only replaced, so that the array of variables never moves.
  ::setenv("TZ", "UTC0", 1);
  ::tzset();
  try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto options = host::readHostOptions(words, host::defaultPaths(), std::cout);
    const int status = options ? host::runClockHost(*options) : 0;
    return status == 0 && !host::outputArrived("clockhost") ? 1 : status;
  } catch (const host::UsageError& error) {
    return fail(error, 2);
  } catch (const std::bad_alloc&) {
    std::cerr << "clockhost: not enough memory to run; raise the limit (ulimit -v) or free some\n";
    return 1;
  } catch (const std::exception& error) {
    return fail(error, 1);
  }
}
