#pragma once

#include <optional>
#include <string>

#include "ClockServiceIfc.h"
#include "FrameworkContext.h"
#include "clock/VirtualClock.h"
#include "remote/CodecTable.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "services/MemoryDataAccess.h"
#include "support/TemporaryFolder.h"

namespace bench {

// A telephone in this process: the host around the plug-in that ships. Its zone has daylight
// saving, its log level is the usual one, and its clock runs. Owner: a measurement, one at a time.
// Thread: its owner's, which is the framework thread.
class Telephone {
 public:
  Telephone();
  ~Telephone();
  Telephone(const Telephone&) = delete;
  Telephone& operator=(const Telephone&) = delete;

  [[nodiscard]] ClockServiceIfc& service() { return *m_service; }
  [[nodiscard]] host::Device& device() { return *m_device; }
  [[nodiscard]] host::CodecTable& codecs() { return m_remote.codecs; }

 private:
  // The framework's side of remote calls: codecs, and no observers.
  struct Remote final : FrameworkContext {
    MessageCodec* getCodec(const std::string& name) override { return codecs.find(name); }
    Proxy* createProxy(const std::string&, const std::string&) override { return nullptr; }
    host::CodecTable codecs;
  };

  // Sets a management value and lets the service apply it. Throws when it is refused.
  void set(const std::string& key, const std::string& value);

  const support::TemporaryFolder m_folder;
  host::MemoryDataAccess m_store;
  host::Plugin m_plugin;
  host::VirtualClock m_clock;
  Remote m_remote;
  std::optional<host::Device> m_device;
  ClockServiceIfc* m_service = nullptr;
};

// While it exists, this process's time calls read the machine's clock, as on a telephone.
class MachineClock {
 public:
  MachineClock() : m_before(host::processClock()) { host::setProcessClock(nullptr); }
  ~MachineClock() { host::setProcessClock(m_before); }
  MachineClock(const MachineClock&) = delete;
  MachineClock& operator=(const MachineClock&) = delete;

 private:
  host::VirtualClock* const m_before;
};

}  // namespace bench
