#include "Service.h"

Service::~Service() = default;

void Service::handleMsg(const char* /*data*/, int /*length*/, std::string /*sender*/,
                        CommsChannelIfc& /*channel*/,
                        CommsChannelDataContainerMessage* /*container*/) {}
