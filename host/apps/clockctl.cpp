#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "control/ClockCtl.h"
#include "platform/ProgramStart.h"
#include "platform/ShownText.h"
#include "platform/StandardOutput.h"
#include "runtime/DefaultPaths.h"

int main(int argc, char** argv) {
  host::startProgram();
  try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const int status = host::runClockCtl(words, host::defaultPaths().socket, std::cout, std::cerr);
    return status == 0 && !host::outputArrived("clockctl") ? 1 : status;
  } catch (const std::exception& error) {
    std::cerr << host::errorLine("clockctl", error.what());
    return 1;
  }
}
