#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "ClockServiceIfc.h"
#include "FrameworkContext.h"
#include "clock/VirtualClock.h"
#include "remote/CodecTable.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "services/MemoryDataAccess.h"

namespace bench {

// A telephone in this process: the host's parts around the plug-in that ships, its clock paused.
// Owner: a measurement, one at a time. Thread: its owner's, which is the framework thread.
class Telephone {
 public:
  // Its files go into this folder, which outlives it.
  explicit Telephone(const std::filesystem::path& folder, host::DeviceOptions options = {});
  ~Telephone();
  Telephone(const Telephone&) = delete;
  Telephone& operator=(const Telephone&) = delete;

  [[nodiscard]] ClockServiceIfc& service() { return *m_service; }
  [[nodiscard]] host::Device& device() { return *m_device; }
  [[nodiscard]] host::VirtualClock& clock() { return m_clock; }
  [[nodiscard]] host::CodecTable& codecs() { return m_remote.codecs; }

  // A management value, set and applied as the management layer does it. Throws when refused.
  void set(const std::string& key, const std::string& value);

 private:
  // The framework's side of remote calls: codecs, and nobody to observe for.
  struct Remote final : FrameworkContext {
    MessageCodec* getCodec(const std::string& name) override { return codecs.find(name); }
    Proxy* createProxy(const std::string&, const std::string&) override { return nullptr; }
    host::CodecTable codecs;
  };

  host::Plugin m_plugin;
  host::VirtualClock m_clock;
  Remote m_remote;
  std::optional<host::Device> m_device;
  ClockServiceIfc* m_service = nullptr;
};

// Options for a telephone that saves nothing on disk: its settings are in the store.
[[nodiscard]] host::DeviceOptions inMemory(host::MemoryDataAccess& store);

}  // namespace bench
