#pragma once

#include "Executable.h"

class ProxyRequest;

// Stands in for an object in another process. Owner: the framework.
class Proxy : public Executable {
 public:
  ~Proxy() override;
  void init(Context& context) override;  // does nothing
  void shutdown() override;              // does nothing

  // Binds the proxy to its peer, once, before its first use. `request` outlives the proxy.
  virtual void initProxy(ProxyRequest& request) = 0;
};
