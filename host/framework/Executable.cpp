#include "Executable.h"

Executable::~Executable() = default;

void Executable::timerEvent(int /*timerId*/) {}
