#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "FrameworkContext.h"
#include "Invoker.h"
#include "MessageCodec.h"
#include "Method.h"
#include "Platform.h"
#include "PluginFactories.h"
#include "Proxy.h"
#include "ProxyRequest.h"
#include "Service.h"

namespace conformance {

// The three factories of the platform's plug-in, which stays loaded.
struct Plugin {
  explicit Plugin(const std::filesystem::path& file);  // throws std::runtime_error
  ServiceFactory makeService = nullptr;
  InvokerFactory makeInvoker = nullptr;
  ProxyFactory makeProxy = nullptr;
};

// Keeps the events of one observer. Thread: any.
class EventRecorder final : public ProxyRequest {
 public:
  bool sendMethod(Method& event) override;
  std::vector<std::string> take();  // as textOf() writes them

 private:
  std::mutex m_mutex;
  std::vector<std::string> m_events;
};

// The clock service on the platform under test, created and ended as a framework does it. Remote
// calls and events take a short cut in this process, so that they need no part of the platform.
// Owner and thread: the test's. Failure: throws std::runtime_error.
class Telephone {
 public:
  using Values = std::vector<std::pair<std::string, std::variant<int, std::string>>>;

  explicit Telephone(Platform& platform);  // switched on
  ~Telephone();
  Telephone(const Telephone&) = delete;
  Telephone& operator=(const Telephone&) = delete;

  // Off and on again, as the device.
  void restart();

  Platform& platform() { return m_platform; }
  Service& service() { return *m_service; }
  const Plugin& plugin() const { return m_plugin; }

  // The reply to a remote call.
  Method call(const std::string& name, const Values& values = {});
  std::string text(const std::string& name);  // of a reply's only parameter

  // "23:59:59", "2026-03-08".
  std::string localTime();
  std::string localDate();

  // The events since the last call.
  std::vector<std::string> takeEvents() { return m_events.take(); }

  // As the NTP client: the clock is set, and the time reported on the pipe.
  void reportTime(std::uint32_t secondsSinceEpoch);

 private:
  class ShortCut;

  void switchOn();
  void switchOff();
  std::string pipe() { return m_platform.deviceFile("/tmp/votk/ipc/ntpclient"); }

  Platform& m_platform;
  const Plugin m_plugin;
  EventRecorder m_events;
  std::unique_ptr<ShortCut> m_framework;
  std::unique_ptr<Invoker> m_invoker;
  std::unique_ptr<Service> m_service;
};

// Sets the device's clock, as another program does. Throws std::runtime_error.
void setClock(std::int64_t secondsSinceEpoch);

// The instant of a UTC text such as "2026-03-08T06:59:59", in seconds since 1970-01-01 UTC.
std::int64_t instantOf(const std::string& utc);

}  // namespace conformance
