#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "FrameworkContext.h"
#include "Invoker.h"
#include "Method.h"
#include "Proxy.h"
#include "remote/RemoteServer.h"
#include "support/Part.h"

namespace host {

// A proxy that forwards any method. Counts its instances.
class FakeProxy final : public Proxy {
 public:
  static std::atomic<int> living;

  FakeProxy() { ++living; }
  ~FakeProxy() override { --living; }
  void initProxy(ProxyRequest& request) override { m_request = &request; }
  bool send(Method& method);

 private:
  ProxyRequest* m_request = nullptr;
};

// Stands in for the service and the invoker of a device: answers a few methods, and keeps observers
// in a list under a lock, as a service does.
class FakeDevice final : public Invoker {
 public:
  void handleMessage(Executable* executable, const char* message, int length,
                     InvokerResponse* response) override;
  void initInvoker(FrameworkContext* context) override { m_context = context; }

  [[nodiscard]] RemoteTarget target();

  // Sends `method` to every observer; returns how many accepted it. Thread: any.
  int notify(Method& method);
  [[nodiscard]] std::size_t observers();
  [[nodiscard]] int oneWayCalls() const { return m_oneWayCalls; }
  [[nodiscard]] int unobserveCalls() const { return m_unobserveCalls; }

  // Until unobserveAgain(), "unobserveTimeEvents" has no answer.
  void stopUnobserving() { m_unobserving = false; }
  void unobserveAgain() { m_unobserving = true; }

 private:
  using Row = void (FakeDevice::*)(Method& request, Method& reply, const std::string& address);
  static const std::map<std::string, Row>& rows();

  void echo(Method& request, Method& reply, const std::string&);
  void repeat(Method& request, Method& reply, const std::string&);
  void fail(Method&, Method&, const std::string&);
  void observe(Method&, Method& reply, const std::string& address);
  void unobserve(Method&, Method& reply, const std::string& address);

  support::Part m_service;
  FrameworkContext* m_context = nullptr;
  std::atomic<int> m_oneWayCalls = 0;
  std::atomic<int> m_unobserveCalls = 0;
  std::atomic<bool> m_unobserving = true;
  std::mutex m_mutex;
  std::vector<FakeProxy*> m_observers;
};

}  // namespace host
