// getTime() in this process, called and by message.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <time.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
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
#include "framework/ApplicationLog.h"
#include "remote/MessagePackCodec.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioDevice.h"
#include "services/MemoryDataAccess.h"
#include "support/Framework.h"

namespace bench {
namespace {

constexpr int kCallsInARow = 1000;  // of one side, before the other's turn
constexpr std::size_t kPairs = 50;

// A telephone in this process: the plug-in that ships, in the host. Its zone has daylight
// saving, its log level is the usual one, and its clock runs. One at a time.
class PluginInHost {
 public:
  PluginInHost() {
    for (const auto& [key, value] : {std::pair{"sntp-tz-offset", "-5"},
                                     {"daylight-save-zone-id", "12"},
                                     {"daylight-save", "true"},
                                     {"auto-daylight-save", "true"}}) {
      const auto answer = m_device.request({{"verb", "set"}, {"key", key}, {"value", value}});
      if (answer.at("ok") != true) throw std::runtime_error(answer.dump());
    }
    host::ApplicationLog::instance().setLevel(host::ApplicationLog::kDefaultLevel);
    m_device.device().clock().advance(std::chrono::seconds(1));
    m_device.device().clock().setSpeed(1);
    m_framework.keepsCalls = false;
    m_framework.codecs["msgpack"] = &m_codec;
    m_invoker->initInvoker(&m_framework);
  }

  [[nodiscard]] ClockServiceIfc& service() { return m_service; }
  [[nodiscard]] Executable& executable() { return m_device.device().service(); }
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
    options.store = &m_store;
    options.securityLogInMemory = true;
    return options;
  }

  host::MemoryDataAccess m_store;
  host::Plugin m_plugin{CLOCK_PLUGIN};
  host::ScenarioDevice m_device{m_plugin, options()};
  ClockServiceIfc& m_service{dynamic_cast<ClockServiceIfc&>(executable())};
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
  return costOf([&] { benchmark::DoNotOptimize(telephone.service().getTime()); });
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
  const auto count = [](const auto& call) { return static_cast<double>(instructionsOf(call)); };
  return {count([&] { benchmark::DoNotOptimize(telephone.service().getTime()); }),
          count([] { benchmark::DoNotOptimize(printedTime()); })};
}

Sample measureMessage() {
  constexpr double kInMicroseconds = 1000;
  PluginInHost telephone;
  const std::string request = telephone.requestFor("getTime");
  const auto message = [&] {
    telephone.invoker().handleMessage(&telephone.executable(), request.data(),
                                      static_cast<int>(request.size()), new Dropped);
  };
  return alternately(
      kPairs, [&] { return costOf(message) / kInMicroseconds; },
      [&] { return costOfGetTime(telephone) / kInMicroseconds; });
}

}  // namespace bench
