#include "runtime/Device.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <optional>
#include <utility>

#include "DataStorage.h"
#include "base/Descriptor.h"
#include "base/Error.h"
#include "clock/VirtualClock.h"
#include "framework/StateFolder.h"
#include "host/runtime/TestPlugins.h"
#include "interpose/DeviceRoot.h"
#include "runtime/Plugin.h"
#include "services/LocalManagement.h"
#include "services/ManagementThread.h"
#include "services/MemoryDataAccess.h"
#include "services/PhysicalInterface.h"
#include "services/SecurityLog.h"
#include "support/Becomes.h"
#include "support/ErrorOf.h"
#include "support/Framework.h"
#include "support/LogCapture.h"
#include "support/NoThreads.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;

// Waits until the listener blocks in open(): a writer can then open the pipe, which wakes it once.
bool waitForReader(const std::string& pipe) {
  return support::becomesTrue([&pipe] {
    return Descriptor(::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)).valid();
  });
}

// The position of a note among all of them; their number when it is missing.
std::ptrdiff_t placeOf(const char* note) {
  const auto notes = pluginNotes();
  return std::find(notes.begin(), notes.end(), note) - notes.begin();
}

class DeviceWithTestPlugin : public ::testing::Test {
 protected:
  DeviceWithTestPlugin() {
    setDeviceRoot(folder / "root");
    clearPluginNotes();
    options.state = folder / "state";
  }
  ~DeviceWithTestPlugin() override {
    device.reset();
    setDeviceRoot("");
    setStorageFolder("");
  }

  void start() {
    device.emplace(clock, plugin, options);
    device->start(remote);
  }
  void onManagementThread(const std::function<void(LocalManagement&)>& body) {
    device->managementThread().run([&] { body(device->management()); });
  }

  support::TemporaryFolder folder;
  support::LogCapture log;
  VirtualClock clock;
  Plugin plugin{testPlugin("full")};
  support::Framework remote;
  DeviceOptions options;
  std::optional<Device> device;
};

TEST_F(DeviceWithTestPlugin, FindsAllServicesAndStopsInOrderAndOnce) {
  start();
  EXPECT_TRUE(device->running());
  device->stop();
  EXPECT_FALSE(device->running());
  device->stop();
  device.reset();
  EXPECT_THAT(pluginNotes(),
              ElementsAre("invoker has its framework", "init with TZ UTC0",
                          "found DataAccessServiceIfc", "found LocalMgmtIfc",
                          "found SecurityLogServiceIfc", "found PhysicalInterfaceServiceIfc",
                          "found ClockService", "shutdown", "deleted", "invoker deleted"));
}

// A cleaner of temporary folders may delete it.
TEST_F(DeviceWithTestPlugin, StopWakesAListenerWhosePipeWasDeleted) {
  start();
  ASSERT_TRUE(waitForPluginNote("listener waits"));
  const std::string pipe = hostPath("/tmp/votk/ipc/ntpclient");
  clearPluginNotes();
  ASSERT_TRUE(waitForReader(pipe));
  ASSERT_TRUE(waitForPluginNote("listener waits"));  // again
  std::filesystem::remove_all(folder / "root");
  device->stop();
  EXPECT_THAT(pluginNotes(), Contains("deleted"));
}

TEST_F(DeviceWithTestPlugin, StopEndsTheProcessWhenItsThreadCannotBeStarted) {
  const auto stopWithoutThreads = [this] {
    start();
    support::refuseThreads();
    device->stop();
  };
  EXPECT_EXIT(stopWithoutThreads(), ::testing::ExitedWithCode(1),
              "^clockhost: cannot start the management thread: .*\n$");
}

// The call lasts until the service is deleted, or has had the time for that.
TEST_F(DeviceWithTestPlugin, DeletesTheServiceOnlyAfterTheManagementCallInProgress) {
  start();
  std::promise<void> begun;  // stop() drops a call that has not begun
  device->managementThread().post([&begun] {
    begun.set_value();
    static_cast<void>(waitForPluginNote("shutdown"));
    static_cast<void>(waitForPluginNote("deleted", std::chrono::milliseconds(100)));
    testPluginNote("call ends");
  });
  begun.get_future().wait();
  device->stop();
  EXPECT_LT(placeOf("call ends"), placeOf("deleted"));
  onManagementThread([](LocalManagement& management) { EXPECT_FALSE(management.hasClock()); });
}

TEST_F(DeviceWithTestPlugin, TakesItsValuesFromTheOptions) {
  options.networkUp = true;
  options.softwareType = "Velmora QEX";
  options.mac = "0001E3A1B2C3";
  options.variant = 3;
  start();
  EXPECT_EQ(device->management().value("interface-status"), "up");
  EXPECT_EQ(device->management().value("related-software-type"), "Velmora QEX");
  EXPECT_EQ(device->management().value("mac-addr"), "0001E3A1B2C3");
  EXPECT_EQ(device->physical().getHardwareSubVariant(), 3);
}

TEST_F(DeviceWithTestPlugin, HasNoNetworkAndNoOtherValuesByDefault) {
  start();
  EXPECT_EQ(device->management().value("interface-status"), "down");
  EXPECT_FALSE(device->management().value("related-software-type").has_value());
  EXPECT_FALSE(device->management().value("mac-addr").has_value());
}

TEST_F(DeviceWithTestPlugin, NotifiesTheServiceOfValuesThatChangeAfterTheStart) {
  options.networkUp = true;
  start();
  onManagementThread([](LocalManagement&) {});
  EXPECT_THAT(pluginNotes(), Not(Contains(StartsWith("changed"))));
  device->management().setValue("interface-status", "up");
  onManagementThread([](LocalManagement&) {});
  EXPECT_THAT(pluginNotes(), Contains("changed interface-status=up"));
}

TEST_F(DeviceWithTestPlugin, NothingReachesADeletedService) {
  start();
  device->stop();
  clearPluginNotes();
  device->management().setValue("interface-status", "up");
  onManagementThread([](LocalManagement& management) { EXPECT_FALSE(management.set("time", "")); });
  device->physical().jack(5, 1);
  EXPECT_TRUE(pluginNotes().empty());
}

TEST_F(DeviceWithTestPlugin, TimersAndJacksReachTheService) {
  start();
  clock.advance(std::chrono::seconds(1));
  device->physical().jack(5, 1);
  EXPECT_THAT(pluginNotes(), Contains("timer 1"));
  EXPECT_THAT(pluginNotes(), Contains("jack 5 1"));
}

TEST_F(DeviceWithTestPlugin, StoresTheStartTimeBeforeTheServiceStarts) {
  options.at = "2026-03-08T06:59:50+00:00";
  start();
  EXPECT_EQ(device->store().getItem(DASUtilsStrings::ClockSettingsSchema, "FallbackDateTime"),
            "2026-03-08T06:59:50+00:00");
}

TEST_F(DeviceWithTestPlugin, RefusesAStartTimeThatCannotBeStored) {
  MemoryDataAccess store;
  store.refuseSets(0, 1);
  options.store = &store;
  options.at = "2026-03-08T06:59:50+00:00";
  EXPECT_THROW(start(), Error);
}

TEST_F(DeviceWithTestPlugin, KeepsSettingsAndSecurityLogOverARestart) {
  start();
  EXPECT_TRUE(device->store().setItem("schema", "key", "value"));
  device->securityLog().record(0, 4, 1, 5, 3, false, "text", "", "");
  device.reset();
  start();
  EXPECT_EQ(device->store().getItem("schema", "key"), "value");
  EXPECT_EQ(device->securityLog().list(0, 10).size(), 1U);
}

TEST_F(DeviceWithTestPlugin, StartsWithoutTheZoneOfAnEarlierDevice) {
  start();
  device.reset();
  ::setenv("TZ", "LOC5", 1);
  clearPluginNotes();
  start();
  EXPECT_THAT(pluginNotes(), Contains("init with TZ UTC0"));
}

TEST_F(DeviceWithTestPlugin, CreatesNoFilesWithAStoreAndALogInMemory) {
  MemoryDataAccess store;
  options.store = &store;
  options.securityLogInMemory = true;
  start();
  EXPECT_TRUE(device->store().setItem("schema", "key", "value"));
  EXPECT_EQ(store.getItem("schema", "key"), "value");
  EXPECT_FALSE(std::filesystem::exists(folder / "state"));
  device.reset();
}

TEST_F(DeviceWithTestPlugin, RefusesToStartWhenAFactoryReturnsNull) {
  const std::pair<const char*, std::string> rows[] = {
      {"null_service", "createClockService"},
      {"null_invoker", "createClockServiceInvoker"},
      {"null_proxy", "createClockServiceObserverProxy"},
  };
  for (const auto& [kind, factory] : rows) {
    Plugin broken(testPlugin(kind));
    device.emplace(clock, broken, options);
    EXPECT_EQ(
        errorOf([&] { device->start(remote); }),
        "plug-in \"" + broken.file().string() + "\": the factory " + factory + " returned null");
    EXPECT_FALSE(device->running());
    device.reset();
  }
}

}  // namespace
}  // namespace host
