#pragma once

#include <filesystem>
#include <memory>

#include "PluginFactories.h"

namespace host {

// A loaded plug-in: a file with three factories, and nothing else is known of it.
// Owner: whoever runs the device; it outlives every object the factories made. Thread: any.
// Failure: host::Error, one line that names the file and the factory.
class Plugin {
 public:
  static constexpr const char* kServiceFactory = "createClockService";
  static constexpr const char* kInvokerFactory = "createClockServiceInvoker";
  static constexpr const char* kProxyFactory = "createClockServiceObserverProxy";

  // Loads the file and finds the factories. Throws: missing, not loadable, a factory is absent.
  explicit Plugin(const std::filesystem::path& file);

  // A new object, owned by the caller; never null. Throws when the factory returned null.
  [[nodiscard]] Service* createService();
  [[nodiscard]] Invoker* createInvoker();
  [[nodiscard]] Proxy* createProxy();

  [[nodiscard]] const std::filesystem::path& file() const { return m_file; }

 private:
  struct Close {
    void operator()(void* handle) const;
  };

  template <class Factory>
  Factory find(const char* name) const;
  template <class Object>
  Object* make(Object* (*factory)(), const char* name) const;

  std::filesystem::path m_file;
  std::unique_ptr<void, Close> m_handle;
  ServiceFactory m_service = nullptr;
  InvokerFactory m_invoker = nullptr;
  ProxyFactory m_proxy = nullptr;
};

}  // namespace host
