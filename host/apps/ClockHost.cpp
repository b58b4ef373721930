#include "apps/ClockHost.h"

#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <utility>

#include "DataStorage.h"
#include "Logging.h"
#include "apps/HostOptions.h"
#include "apps/Readiness.h"
#include "base/Descriptor.h"
#include "base/Error.h"
#include "base/ProgressLine.h"
#include "base/Version.h"
#include "clock/VirtualClock.h"
#include "framework/ApplicationLog.h"
#include "framework/DataAccess.h"
#include "framework/MemoryReserve.h"
#include "framework/ProgramMap.h"
#include "interpose/DeviceRoot.h"
#include "operator/Controller.h"
#include "remote/RemoteServer.h"
#include "runtime/ChangeRecorder.h"
#include "runtime/ClockChannel.h"
#include "runtime/ClockPrivilege.h"
#include "runtime/ClockSetWatch.h"
#include "runtime/Device.h"
#include "runtime/EventLoop.h"
#include "runtime/HostLog.h"
#include "runtime/LogLine.h"
#include "runtime/Plugin.h"
#include "runtime/ProgramLog.h"
#include "runtime/ReportPipe.h"
#include "runtime/SavedTime.h"
#include "scenario/ScenarioSuite.h"
#include "services/ManagementThread.h"
#include "services/SecurityLog.h"

namespace host {
namespace {

// The pipe is created again only after this pause: created at once, it would be in the way of a
// program that is just removing the folder with its content.
constexpr std::chrono::milliseconds kPipeRestoreDelay{100};

// The host records its own set of the machine's clock within this time.
constexpr std::chrono::milliseconds kOwnSetDelay{100};

// Work that the first replies do not need starts this long after the host listens.
constexpr std::chrono::milliseconds kAfterFirstReplies{10};

// Changes are written to the history together, so that a set does not write its file.
constexpr std::chrono::seconds kHistoryDelay{1};

// During its lifetime, each NTP client process inherits a channel that sets the clock.
class ClientChannels {
 public:
  ClientChannels(EventLoop& loop, VirtualClock& clock) {
    ProgramMap::instance().giveChannel(kClient, [this, &loop, &clock] {
      return openClockChannel(loop.io(), clock, m_filterMissed);
    });
  }
  ~ClientChannels() { ProgramMap::instance().giveChannel(kClient, {}); }
  ClientChannels(const ClientChannels&) = delete;
  ClientChannels& operator=(const ClientChannels&) = delete;

 private:
  static constexpr const char* kClient = "/sbin/ntpclient";
  std::atomic<bool> m_filterMissed = false;
};

void prepareProcess(const HostOptions& options) {
  gainNoPrivileges();
  if (options.systemClock) keepOnlyClockPrivilege(options.socketGroup);
  ApplicationLog::instance().setLevel(options.logLevel);
  setDeviceRoot(std::filesystem::absolute(options.deviceRoot));
  ProgramMap::instance().setStandInFolder(options.standIns);
  if (options.systemClock) ProgramMap::instance().allowDevicePrograms();
  for (const auto& [device, path] : options.programs) {
    ProgramMap::instance().set(device, std::filesystem::absolute(path));
  }
}

// Tells the NTP client where to report, and replaces an inherited variable.
void exportReportPipe() {
  ::setenv("CLOCKHOST_PIPE", hostPath(kReportPipePath).c_str(), 1);
}

VirtualClock::Source sourceOf(const HostOptions& options) {
  if (!options.systemClock) return VirtualClock::Source::virtualTime;
  if (!maySetSystemClock()) {
    throw Error(
        "--clock system sets this machine's clock and needs the privilege to (CAP_SYS_TIME)");
  }
  return VirtualClock::Source::system;
}

int runScenarios(const HostOptions& options) {
  const bool terminal = showsProgress(STDERR_FILENO);
  return runScenarioSuite(options.plugin, options.scenarios, std::cout, std::cerr, terminal);
}

// A time given with --at is intended, however odd.
void warnOfOddSavedTime(Device& device) {
  const auto saved =
      device.store().getItem(DASUtilsStrings::ClockSettingsSchema, "FallbackDateTime");
  if (!saved || device.options().at) return;
  if (const auto odd = oddSavedTime(*saved)) {
    logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "%s", odd->c_str());
  }
}

// All parts of a host, in order of construction. The server comes before the device: a second host
// must fail at the socket before it touches the state folder.
class Host {
 public:
  Host(const HostOptions& options, HostLog& log);
  // Disconnects the clients while the parts that answer them still exist.
  ~Host() { m_server.stop(); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  void runUntilStopped(Readiness& readiness);

 private:
  void watchReportPipe();
  void openSecurityLog();
  void writeHistoryLater();
  void watchMachineClock();

  Plugin m_plugin;
  VirtualClock m_clock;
  ProcessClock m_processClock;
  EventLoop m_loop;
  ClientChannels m_channels;
  ProgramLog m_programLog;
  RemoteServer m_server;
  Device m_device;
  Controller m_controller;
  Descriptor m_clockSets;  // under --clock system
  std::function<void()> m_ready;
};

// Called before all else, so that a signal during the start also shuts the host down cleanly.
EventLoop& stoppedBySignals(EventLoop& loop) {
  loop.stopOnSignals();
  return loop;
}

ClockMoveQueue::Later postTo(EventLoop& loop) {
  return [&loop](std::function<void()> task) { loop.post(std::move(task)); };
}

Host::Host(const HostOptions& options, HostLog& log)
    : m_plugin(options.plugin),
      m_clock(sourceOf(options)),
      m_processClock(m_clock),
      m_loop(m_clock),
      m_channels(stoppedBySignals(m_loop), m_clock),
      m_programLog(m_loop.io()),
      m_server(m_loop.io(), {options.socket, options.controlSocket, options.socketGroup},
               [this](ControlRequest request) { m_controller.handle(std::move(request)); }),
      m_device(m_clock, m_plugin, options.device),
      m_controller(m_device, HostFacts{[this] { return m_server.clients(); }, options.socket,
                                       kVersion, options.plugin, postTo(m_loop), &m_server.tap()}) {
  log.reopenOnHangup(m_loop);
  m_device.start(m_server);
  warnOfOddSavedTime(m_device);
  m_server.serve({m_device.service(), m_device.invoker(), [this] { return m_device.makeProxy(); }});
  m_device.history().writeWith([this] { m_loop.post([this] { writeHistoryLater(); }); });
  if (!options.systemClock) m_clock.setSpeed(options.speed);
  m_loop.postAfter(kAfterFirstReplies, [this, &log, system = options.systemClock] {
    log.start();
    watchReportPipe();
    if (system) watchMachineClock();
    openSecurityLog();
  });
  logAppUni("clockhost", kLogNote, __FILE__, __LINE__, "listening at \"%s\"",
            options.socket.c_str());
}

// A pipe that changed before this call is repaired too. The host also runs without this watch.
void Host::watchReportPipe() try {
  ReportPipe& pipe = m_device.reportPipe();
  m_loop.onReadable(pipe.watch(), kPipeRestoreDelay, [&pipe] { pipe.restore(); });
} catch (const std::exception& error) {
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "%s; a deleted pipe is not recreated",
            error.what());
}

// On the management thread, which may wait for a disk.
void Host::writeHistoryLater() {
  m_loop.postAfter(kHistoryDelay, [this] {
    m_device.managementThread().post([this] { m_device.history().write(); });
  });
}

// On the management thread, because a long log takes a while. After that the host is ready. A
// failure ends it: the loop throws it.
void Host::openSecurityLog() {
  m_device.managementThread().post([this] {
    try {
      m_device.securityLog().open();
      ::malloc_trim(0);  // gives back what the start and the check have used and freed
      m_loop.post([this] { m_ready(); });
    } catch (...) {
      m_loop.post([failure = std::current_exception()] { std::rethrow_exception(failure); });
    }
  });
}

// Checks kOwnSetDelay after a set, so that the host's own sets are recorded by then.
void Host::watchMachineClock() try {
  m_clockSets = openClockSetWatch();
  m_loop.onReadable(m_clockSets.get(), kOwnSetDelay, [this] {
    clearClockSetWatch(m_clockSets.get());
    m_device.changes().checkMachineClock();
  });
} catch (const std::exception& error) {
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__, "%s", error.what());
}

void Host::runUntilStopped(Readiness& readiness) {
  m_ready = [&readiness] { readiness.ready(); };
  m_loop.run();
  readiness.stopping();
  logAppUni("clockhost", kLogNote, __FILE__, __LINE__, "shutting down");
}

}  // namespace

int runClockHost(const HostOptions& options) {
  prepareProcess(options);
  if (!options.scenarios.files.empty()) return runScenarios(options);
  Readiness readiness(options.readyDescriptor);
  HostLog log(options.logFile);
  exportReportPipe();
  const MemoryReserve reserve;
  Host(options, log).runUntilStopped(readiness);
  return 0;
}

}  // namespace host
