#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Executable.h"
#include "FrameworkContext.h"
#include "Invoker.h"
#include "Promise.h"
#include "Proxy.h"

namespace conformance {

// A proxy that keeps what it was bound to. Counts its instances.
class PlainProxy final : public Proxy {
 public:
  static inline std::atomic<int> living = 0;

  PlainProxy() { ++living; }
  ~PlainProxy() override { --living; }
  void initProxy(ProxyRequest& bound) override { request = &bound; }

  ProxyRequest* request = nullptr;
};

// A request as the invoker got it.
struct Request {
  Executable* service = nullptr;
  std::string text;  // decoded, as textOf() writes it; empty if it could not be decoded
  std::string codec;
  std::string address;
};

// The plug-in's end of remote calls: replies to each call with its parameters. On
// "observeTimeEvents" it keeps the caller's proxy as an observer, as the plug-in does, and drops it
// on "unobserveTimeEvents".
class EchoInvoker final : public Invoker {
 public:
  void initInvoker(FrameworkContext* context) override { m_context = context; }
  void handleMessage(Executable* service, const char* message, int length,
                     InvokerResponse* response) override;

  std::vector<Request> requests;
  std::vector<PlainProxy*> observers;
  std::vector<PlainProxy*> proxies;              // what each "observeTimeEvents" got
  std::function<void(PlainProxy*)> onUnobserve;  // called before it is dropped

 private:
  Method replyTo(const Method& call, const std::string& address);

  FrameworkContext* m_context = nullptr;
};

// A platform that serves remote calls through an EchoInvoker.
class RemotePromise : public Promise {
 protected:
  RemotePromise();

  // A client, and the address that the framework has given it.
  struct Client {
    int number = 0;
    std::string address;
  };
  Client connect();
  // The reply as text; "none" without one.
  std::string replyTo(const Client& client, Method call);
  // The client's proxy, registered as an observer.
  PlainProxy* observe(const Client& client);

  static constexpr const char* kInterface = "ClockServiceObserverIfc";

  class PlainService final : public Executable {
   public:
    void init(Context& /*context*/) override {}
    void shutdown() override {}
  };

  PlainService m_service;
  EchoInvoker m_invoker;
};

// An event with a number.
Method eventOf(int number);

}  // namespace conformance
