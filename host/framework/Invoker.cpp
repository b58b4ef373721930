#include "Invoker.h"

Invoker::~Invoker() = default;

void Invoker::initInvoker(FrameworkContext* /*context*/) {}
