#include "Proxy.h"

Proxy::~Proxy() = default;

void Proxy::init(Context& /*context*/) {}

void Proxy::shutdown() {}
