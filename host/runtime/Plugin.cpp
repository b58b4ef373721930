#include "runtime/Plugin.h"

#include <dlfcn.h>

#include <string>

#include "base/Error.h"
#include "runtime/PluginFile.h"

namespace host {
namespace {

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& why) {
  throw Error("plug-in \"" + file.string() + "\": " + why);
}

// The text of dlerror without the file name that it begins with.
std::string loadError(const std::filesystem::path& file) {
  const char* const words = dlerror();
  std::string text = words == nullptr ? "unknown reason" : words;
  const std::string prefix = file.string() + ": ";
  return text.compare(0, prefix.size(), prefix) == 0 ? text.substr(prefix.size()) : text;
}

}  // namespace

Plugin::Plugin(const std::filesystem::path& file) : m_file(std::filesystem::absolute(file)) {
  const std::string wanted = std::string(" (wanted for its factory ") + kServiceFactory + ")";
  if (!std::filesystem::exists(m_file)) refuse(m_file, "no such file" + wanted);
  if (const auto why = pluginFileFault(m_file))
    refuse(m_file, "cannot be loaded" + wanted + ": " + *why);
  m_handle.reset(dlopen(m_file.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!m_handle) refuse(m_file, "cannot be loaded" + wanted + ": " + loadError(m_file));
  m_service = find<ServiceFactory>(kServiceFactory);
  m_invoker = find<InvokerFactory>(kInvokerFactory);
  m_proxy = find<ProxyFactory>(kProxyFactory);
}

Service* Plugin::createService() {
  return make(m_service, kServiceFactory);
}

Invoker* Plugin::createInvoker() {
  return make(m_invoker, kInvokerFactory);
}

Proxy* Plugin::createProxy() {
  return make(m_proxy, kProxyFactory);
}

void Plugin::Close::operator()(void* handle) const {
  dlclose(handle);
}

template <class Factory>
Factory Plugin::find(const char* name) const {
  void* const symbol = dlsym(m_handle.get(), name);
  if (symbol == nullptr) refuse(m_file, std::string("the factory ") + name + " is absent");
  return reinterpret_cast<Factory>(symbol);
}

template <class Object>
Object* Plugin::make(Object* (*factory)(), const char* name) const {
  Object* const object = factory();
  if (object == nullptr) refuse(m_file, std::string("the factory ") + name + " returned null");
  return object;
}

}  // namespace host
