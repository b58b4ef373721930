#include "ntpclient/Program.h"

int main(int argumentCount, char* arguments[]) {
  return host::ntp::runProgram(argumentCount, arguments);
}
