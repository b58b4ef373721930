#pragma once

class Executable;
class FrameworkContext;
class InvokerResponse;

// Turns encoded requests into calls on a service. Owner: the framework.
class Invoker {
 public:
  virtual ~Invoker();

  // Handles one request of `length` bytes for `executable`. Owns `response` and deletes it.
  virtual void handleMessage(Executable* executable, const char* message, int length,
                             InvokerResponse* response) = 0;

  // Called once, before the first message. The default ignores the context.
  virtual void initInvoker(FrameworkContext* context);
};
