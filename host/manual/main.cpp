#include "manual/ManPage.h"
#include "manual/ManualFiles.h"

int main(int argc, char** argv) {
  return host::writeManuals({argv + 1, argv + argc}, "clock-manual", [](const std::string& date) {
    return std::vector<host::Manual>{{host::clockHostPage(date), host::hostWords()},
                                     {host::clockCtlPage(date), host::ctlWords()}};
  });
}
