// getTime() in this process, called and by message.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <time.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "Alternate.h"
#include "ClockServiceIfc.h"
#include "Instructions.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "Measure.h"
#include "Method.h"
#include "clock/VirtualClock.h"
#include "interpose/DeviceRoot.h"
#include "remote/MessagePackCodec.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioPeer.h"
#include "services/LocalManagement.h"
#include "services/MemoryDataAccess.h"
#include "support/Framework.h"
#include "support/TemporaryFolder.h"

namespace bench {
namespace {

constexpr int kCallsInARow = 1000;  // of one side, before the other's turn
constexpr std::size_t kPairs = 50;

// A telephone in this process: the plug-in that ships, in the host's framework. Its zone has
// daylight saving, its clock runs, and its log has the usual level and no reader. One at a time.
class PluginInHost {
 public:
  PluginInHost() {
    host::setDeviceRoot((m_folder / "root").string());
    m_device.start(m_peer);
    for (const auto& [key, value] : {std::pair{"sntp-tz-offset", "-5"},
                                     {"daylight-save-zone-id", "12"},
                                     {"daylight-save", "true"},
                                     {"auto-daylight-save", "true"}}) {
      if (!m_device.management().set(key, value)) throw std::runtime_error(key);
    }
    m_clock.advance(std::chrono::seconds(1));
    m_clock.setSpeed(1);
    m_framework.keepsCalls = false;
    m_framework.codecs["msgpack"] = &m_codec;
    m_invoker->initInvoker(&m_framework);
  }
  ~PluginInHost() {
    m_device.stop();
    host::setDeviceRoot("");
  }
  PluginInHost(const PluginInHost&) = delete;
  PluginInHost& operator=(const PluginInHost&) = delete;

  [[nodiscard]] ClockServiceIfc& service() {
    return dynamic_cast<ClockServiceIfc&>(m_device.service());
  }
  [[nodiscard]] Executable& executable() { return m_device.service(); }
  [[nodiscard]] Invoker& invoker() { return *m_invoker; }
  [[nodiscard]] std::string requestFor(const char* name) {
    Method method(name, Method::call);
    std::stringstream stream;
    m_codec.encode(method, stream);
    return stream.str();
  }

 private:
  [[nodiscard]] host::DeviceOptions options() {
    host::DeviceOptions options;
    options.state = m_folder / "state";
    options.store = &m_store;
    options.securityLogInMemory = true;
    return options;
  }

  const support::TemporaryFolder m_folder;
  host::MemoryDataAccess m_store;
  host::VirtualClock m_clock;
  host::ProcessClock m_processClock{m_clock};
  host::Plugin m_plugin{CLOCK_PLUGIN};
  host::ScenarioPeer m_peer;
  host::Device m_device{m_clock, m_plugin, options()};
  host::MessagePackCodec m_codec;
  support::Framework m_framework;
  const std::unique_ptr<Invoker> m_invoker{m_plugin.createInvoker()};
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

// Drops the reply: support::Response would take time to keep it.
class Dropped : public InvokerResponse {
 public:
  const char* getCodecName() override { return "msgpack"; }
  const char* getReplyAddress() override { return "client-1"; }
  void sendReply(const char* data, int length) override {
    benchmark::DoNotOptimize(data);
    benchmark::DoNotOptimize(length);
  }
};

void handle(PluginInHost& telephone, const std::string& request) {
  telephone.invoker().handleMessage(&telephone.executable(), request.data(),
                                    static_cast<int>(request.size()), new Dropped);
}

// Nanoseconds of processor time that each of many calls takes.
template <class Call>
double costOf(Call call) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
  };
  const double begin = now();
  for (int i = 0; i < kCallsInARow; ++i) call();
  return (now() - begin) / kCallsInARow;
}

double costOfGetTime(PluginInHost& telephone) {
  return costOf([&service = telephone.service()] { benchmark::DoNotOptimize(service.getTime()); });
}

// The least that getTime() can do. The C library's time, not the host's that replaces it here.
std::string printedTime() {
  static const auto libraryTime = reinterpret_cast<decltype(&::time)>(dlsym(RTLD_NEXT, "time"));
  const time_t now = libraryTime(nullptr);
  tm local{};
  localtime_r(&now, &local);
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "%02d:%02d", local.tm_hour, local.tm_min);
  return text.data();
}

template <class Call>
double instructions(const Call& call) {
  return static_cast<double>(instructionsOf(call));
}

double instructionsOfGetTime(PluginInHost& telephone) {
  return instructions(
      [&service = telephone.service()] { benchmark::DoNotOptimize(service.getTime()); });
}

}  // namespace

// Both ask the machine's clock.
Sample measureGetTime() {
  PluginInHost telephone;
  const MachineClock clock;
  return alternately(
      kPairs, [&] { return costOfGetTime(telephone); },
      [] { return costOf([] { benchmark::DoNotOptimize(printedTime()); }); });
}

Sample measureGetTimeInstructions() {
  PluginInHost telephone;
  const MachineClock clock;
  return {instructionsOfGetTime(telephone),
          instructions([] { benchmark::DoNotOptimize(printedTime()); })};
}

Sample measureMessage() {
  constexpr double kInMicroseconds = 1000;
  PluginInHost telephone;
  const std::string request = telephone.requestFor("getTime");
  return alternately(
      kPairs, [&] { return costOf([&] { handle(telephone, request); }) / kInMicroseconds; },
      [&] { return costOfGetTime(telephone) / kInMicroseconds; });
}

Sample measureMessageInstructions() {
  PluginInHost telephone;
  const std::string request = telephone.requestFor("getTime");
  return {instructions([&] { handle(telephone, request); }), instructionsOfGetTime(telephone)};
}

}  // namespace bench
