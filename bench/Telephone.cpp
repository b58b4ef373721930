#include "Telephone.h"

#include <stdexcept>
#include <utility>

#include "clock/DeviceRoot.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"

namespace bench {

Telephone::Telephone(const std::filesystem::path& folder, host::DeviceOptions options)
    : m_plugin(BENCH_PLUGIN) {
  host::setProcessClock(&m_clock);
  host::setDeviceRoot(folder / "root");
  options.state = folder / "state";
  m_device.emplace(m_clock, m_plugin, options);
  m_device->start(m_remote);
  m_device->managementThread().run([] {});  // what the start has left to be done is done
  m_service = dynamic_cast<ClockServiceIfc*>(&m_device->service());
  if (m_service == nullptr) throw std::logic_error("the plug-in's service is no clock");
}

Telephone::~Telephone() {
  m_device.reset();
  host::setDeviceRoot("");
  host::setProcessClock(nullptr);
}

void Telephone::set(const std::string& key, const std::string& value) {
  bool accepted = false;
  m_device->managementThread().run([&] { accepted = m_device->management().set(key, value); });
  if (!accepted) throw std::runtime_error("setting " + key + " was refused");
}

host::DeviceOptions inMemory(host::MemoryDataAccess& store) {
  host::DeviceOptions options;
  options.store = &store;
  options.securityLogInMemory = true;
  return options;
}

}  // namespace bench
