#pragma once

class Method;

// Sends a proxy's messages to its peer. Owner: the framework. Thread: any.
class ProxyRequest {
 public:
  // Queues the message for the peer and returns at once. False when the peer is gone.
  virtual bool sendMethod(Method& method) = 0;

 protected:
  ~ProxyRequest() = default;
};
