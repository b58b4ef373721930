#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "apps/ClockCtl.h"
#include "base/DefaultPaths.h"
#include "base/PrintableText.h"
#include "base/ProgramStart.h"
#include "base/StandardOutput.h"

int main(int argc, char** argv) {
  host::startProgram();
  try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const int status = host::runClockCtl(words, host::defaultPaths().socket, std::cout, std::cerr);
    const std::string lost = status == 0 ? host::outputError(std::cout) : "";
    return lost.empty() ? status : host::failClockCtl(words, lost, std::cerr);
  } catch (const std::exception& error) {
    std::cerr << host::errorLine("clockctl", error.what());
    return 1;
  }
}
