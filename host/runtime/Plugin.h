#pragma once

#include <filesystem>
#include <memory>

#include "PluginFactories.h"

namespace host {

// Loads a plug-in with dlopen and finds its three factories, which is all the host knows of it.
// Owner: main; it outlives every object that the factories create. Thread: any.
// Failure: host::Error, one line that names the file and the factory.
class Plugin {
 public:
  static constexpr const char* kServiceFactory = "createClockService";
  static constexpr const char* kInvokerFactory = "createClockServiceInvoker";
  static constexpr const char* kProxyFactory = "createClockServiceObserverProxy";

  // Throws when the file is missing or not loadable, or a factory is absent.
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
