#pragma once

#include "Invoker.h"

class ClockServiceIfc;

// Turns encoded requests of other processes into calls on a ClockServiceIfc.
// Owner: the framework. Thread: any, after initInvoker; requests share no state.
// Failure: logged under "ClockServiceInvoker"; the caller then gets no reply.
class ClockServiceInvoker : public Invoker {
 public:
  ClockServiceInvoker() = default;
  ~ClockServiceInvoker() override;

  void handleMessage(Executable* executable, const char* message, int length,
                     InvokerResponse* response) override;

  // The context is not owned and outlives the invoker.
  void initInvoker(FrameworkContext* frameworkContext) override;

 private:
  void answer(ClockServiceIfc& service, const char* message, int length, InvokerResponse& response);

  FrameworkContext* context = nullptr;
};

extern "C" __attribute__((visibility("default"))) Invoker* createClockServiceInvoker();
