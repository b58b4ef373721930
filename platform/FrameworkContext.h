#pragma once

#include <string>

class MessageCodec;
class Proxy;

// What the framework offers an invoker. Owner: the framework; outlives every invoker. Thread: any.
class FrameworkContext {
 public:
  // The codec kept under `name`, or null. Owned by the framework.
  virtual MessageCodec* getCodec(const std::string& name) = 0;

  // The proxy for `interfaceName` towards the peer at `address`: the same one each time for the
  // same pair, while the peer is connected. Null for an unknown interface or peer. Owned by the
  // framework, which unregisters a peer's observers before it frees the proxy.
  virtual Proxy* createProxy(const std::string& interfaceName, const std::string& address) = 0;

 protected:
  ~FrameworkContext() = default;
};
