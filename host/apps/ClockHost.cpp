#include "apps/ClockHost.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <utility>

#include "DataStorage.h"
#include "Logging.h"
#include "apps/HostOptions.h"
#include "base/DefaultPaths.h"
#include "base/Error.h"
#include "clock/VirtualClock.h"
#include "framework/ApplicationLog.h"
#include "framework/DataAccess.h"
#include "framework/MemoryReserve.h"
#include "framework/ProgramMap.h"
#include "interpose/DeviceRoot.h"
#include "operator/Controller.h"
#include "remote/RemoteServer.h"
#include "runtime/ClockChannel.h"
#include "runtime/ClockPrivilege.h"
#include "runtime/Device.h"
#include "runtime/EventLoop.h"
#include "runtime/Plugin.h"
#include "runtime/ReportPipe.h"
#include "runtime/SavedTime.h"
#include "runtime/StderrLog.h"
#include "scenario/ScenarioRunner.h"

namespace host {
namespace {

// Whoever removes a folder with all that is in it is not to find a pipe in it again meanwhile.
constexpr std::chrono::milliseconds kUntilAllIsRemoved{100};

// While it lives, the POSIX time calls of this process read the clock.
class ProcessClock {
 public:
  explicit ProcessClock(VirtualClock& clock) { setProcessClock(&clock); }
  ~ProcessClock() { setProcessClock(nullptr); }
  ProcessClock(const ProcessClock&) = delete;
  ProcessClock& operator=(const ProcessClock&) = delete;
};

// While it lives, the log goes to standard error; all of it is there when it goes.
class ErrorLog {
 public:
  ErrorLog() { ApplicationLog::instance().addSink(m_sink); }
  ~ErrorLog() { ApplicationLog::instance().removeSink(m_sink); }
  ErrorLog(const ErrorLog&) = delete;
  ErrorLog& operator=(const ErrorLog&) = delete;

 private:
  const std::shared_ptr<LogSink> m_sink = std::make_shared<StderrLog>();
};

// While it lives, each NTP client gets a channel of its own to the clock.
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
  ProgramMap::instance().setStandInFolder(defaultPaths().standIns);
  if (options.systemClock) ProgramMap::instance().allowDevicePrograms();
  for (const auto& [device, path] : options.programs) {
    ProgramMap::instance().set(device, std::filesystem::absolute(path));
  }
}

// Where the NTP client reports, whatever this process has inherited.
void tellChildren() {
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

int runScenario(const HostOptions& options) {
  Plugin plugin(options.plugin);
  return ScenarioRunner(plugin, std::cerr).run(*options.scenario);
}

// A time that was asked for with --at is told to nobody: it was meant.
void tellOddStart(Device& device) {
  const auto saved =
      device.store().getItem(DASUtilsStrings::ClockSettingsSchema, "FallbackDateTime");
  if (!saved || device.options().at) return;
  if (const auto odd = oddSavedTime(*saved)) {
    logAppUni("clockhost", 3, __FILE__, __LINE__, "%s", odd->c_str());
  }
}

// All of a host, in order of construction. The socket comes first: a second host is to hear whose
// it is before it touches anything else.
class Host {
 public:
  explicit Host(const HostOptions& options);
  // Clients go while all that answers them is still there.
  ~Host() { m_server.stop(); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  void runUntilStopped();

 private:
  void watchReportPipe();

  Plugin m_plugin;
  VirtualClock m_clock;
  ProcessClock m_processClock;
  EventLoop m_loop;
  ClientChannels m_channels;
  RemoteServer m_server;
  Device m_device;
  Controller m_controller;
};

ClockPassages::Later later(EventLoop& loop) {
  return [&loop](std::function<void()> task) { loop.post(std::move(task)); };
}

Host::Host(const HostOptions& options)
    : m_plugin(options.plugin),
      m_clock(sourceOf(options)),
      m_processClock(m_clock),
      m_loop(m_clock),
      m_channels(m_loop, m_clock),
      m_server(m_loop.io(), {options.socket, options.controlSocket, options.socketGroup},
               [this](ControlRequest request) { m_controller.handle(std::move(request)); }),
      m_device(m_clock, m_plugin, options.device),
      m_controller(m_device, HostFacts{[this] { return m_server.clients(); }, options.socket,
                                       CLOCK_VERSION, options.plugin, later(m_loop)}) {
  m_loop.stopOnSignals();
  m_device.start(m_server);
  watchReportPipe();
  tellOddStart(m_device);
  m_server.serve({m_device.service(), m_device.invoker(), [this] { return m_device.makeProxy(); }});
  if (!options.systemClock) m_clock.setSpeed(options.speed);
  logAppUni("clockhost", 4, __FILE__, __LINE__, "listening at \"%s\"", options.socket.c_str());
}

// A host that cannot watch its pipe is a host all the same.
void Host::watchReportPipe() try {
  ReportPipe& pipe = m_device.reportPipe();
  m_loop.onReadable(pipe.watch(), kUntilAllIsRemoved, [&pipe] { pipe.restore(); });
} catch (const std::exception& error) {
  logAppUni("clockhost", 3, __FILE__, __LINE__, "%s: it is not made again when it is deleted",
            error.what());
}

void Host::runUntilStopped() {
  m_loop.run();
  logAppUni("clockhost", 4, __FILE__, __LINE__, "shutting down");
}

}  // namespace

int runClockHost(const HostOptions& options) {
  prepareProcess(options);
  if (options.scenario) return runScenario(options);
  const ErrorLog log;
  tellChildren();
  const MemoryReserve reserve;
  Host(options).runUntilStopped();
  return 0;
}

}  // namespace host
