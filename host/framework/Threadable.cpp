#include "Threadable.h"

int Threadable::getThreadPriorityForPlatform() {
  return 0;
}

std::string Threadable::type() {
  return "Threadable";
}
