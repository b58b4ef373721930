#include "Telephone.h"

#include <chrono>
#include <stdexcept>

#include "framework/ApplicationLog.h"
#include "interpose/DeviceRoot.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"

namespace bench {
namespace {

constexpr int kUsualLogLevel = 4;  // of 6

}  // namespace

Telephone::Telephone() : m_plugin(BENCH_PLUGIN) {
  host::setProcessClock(&m_clock);
  host::setDeviceRoot(m_folder / "root");
  host::DeviceOptions options;
  options.state = m_folder / "state";
  options.store = &m_store;
  options.securityLogInMemory = true;
  m_device.emplace(m_clock, m_plugin, options);
  m_device->start(m_remote);
  m_service = dynamic_cast<ClockServiceIfc*>(&m_device->service());
  if (m_service == nullptr) throw std::logic_error("the plug-in's service is not a clock");
  set("sntp-tz-offset", "-5");
  set("daylight-save-zone-id", "12");
  set("daylight-save", "true");
  set("auto-daylight-save", "true");
  host::ApplicationLog::instance().setLevel(kUsualLogLevel);
  m_clock.advance(std::chrono::seconds(1));
  m_clock.setSpeed(1);
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

}  // namespace bench
