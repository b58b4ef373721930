#pragma once

#include <string>

#include "Executable.h"
#include "Threadable.h"

class CommsChannelIfc;
class CommsChannelDataContainerMessage;

// A plug-in's main object, found by other services through Context::getService.
class Service : public Executable, public Threadable {
 public:
  ~Service() override;

  // A raw message from a communication channel. The default ignores it.
  virtual void handleMsg(const char* data, int length, std::string sender, CommsChannelIfc& channel,
                         CommsChannelDataContainerMessage* container);
};
