#include "ntpclient/Program.h"
#include "platform/ProgramStart.h"

int main(int argumentCount, char* arguments[]) {
  host::startProgram();
  return host::ntp::runProgram(argumentCount, arguments);
}
