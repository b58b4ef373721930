#include "base/ProgramStart.h"
#include "ntpclient/Program.h"

int main(int argumentCount, char* arguments[]) {
  host::startProgram();
  return host::ntp::runProgram(argumentCount, arguments);
}
