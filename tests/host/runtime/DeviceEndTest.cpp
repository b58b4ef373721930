// What the end of a device waits for.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>

#include "clock/VirtualClock.h"
#include "framework/StateFolder.h"
#include "host/runtime/TestPluginNotes.h"
#include "host/runtime/TestPlugins.h"
#include "interpose/DeviceRoot.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "support/Becomes.h"
#include "support/Framework.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

using namespace std::chrono_literals;

class EndingDevice : public testing::Test {
 protected:
  EndingDevice() {
    setDeviceRoot(m_folder / "root");
    clearPluginNotes();
    m_options.state = m_folder / "state";
  }
  ~EndingDevice() override {
    setDeviceRoot("");
    setStorageFolder("");
  }

  // Waits until the plug-in has noted that, or for no longer than the limit.
  static void wait(const char* note, std::chrono::milliseconds limit) {
    support::becomesTrue([note] { return placeOf(note) != pluginNotes().size(); }, limit);
  }
  static std::size_t placeOf(const char* note) {
    const auto notes = pluginNotes();
    return static_cast<std::size_t>(std::find(notes.begin(), notes.end(), note) - notes.begin());
  }

  const support::TemporaryFolder m_folder;
  VirtualClock m_clock;
  Plugin m_plugin{testPlugin("full")};
  support::Framework m_framework;
  DeviceOptions m_options;
};

// The call lasts until the service is gone, or has had the time to go.
TEST_F(EndingDevice, FreesTheServiceOnlyAfterTheManagementCallThatIsUnderWay) {
  Device device(m_clock, m_plugin, m_options);
  device.start(m_framework);
  std::promise<void> begun;  // what has not begun is dropped at the end
  device.managementThread().post([&begun] {
    begun.set_value();
    wait("shutdown", 10s);
    wait("deleted", 100ms);
    testPluginNote("call ends");
  });
  begun.get_future().wait();
  device.stop();
  EXPECT_LT(placeOf("call ends"), placeOf("deleted"));
  device.managementThread().run([&] { EXPECT_FALSE(device.management().hasClock()); });
}

}  // namespace
}  // namespace host
