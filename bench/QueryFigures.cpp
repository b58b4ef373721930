// Questions to the clock in this process, and the same by message.
#include <dlfcn.h>

#include <array>
#include <ctime>
#include <sstream>
#include <stdexcept>
#include <string>

#include "BoundedPrint.h"
#include "Folder.h"
#include "GoogleBenchmark.h"
#include "HeapCount.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "Measure.h"
#include "Method.h"
#include "Telephone.h"
#include "platform/LogBook.h"

namespace bench {
namespace {

constexpr double kInMicroseconds = 1000;
constexpr int kUsualLogLevel = 4;  // of 6

// A telephone as it mostly is: time passes, and the zone has daylight saving.
class AskedTelephone : public Telephone {
 public:
  explicit AskedTelephone(const Folder& folder) : Telephone(folder.path()) {
    set("sntp-tz-offset", "-5");
    set("daylight-save-zone-id", "12");
    set("daylight-save", "true");
    set("auto-daylight-save", "true");
    host::LogBook::instance().setLevel(kUsualLogLevel);
    clock().advance(std::chrono::seconds(1));
    clock().setSpeed(1);
  }
};

// The C library's own, behind the one that this program takes its place with.
class LibraryTime {
 public:
  LibraryTime() : m_library(dlopen("libc.so.6", RTLD_LAZY)) {
    if (m_library != nullptr) m_time = reinterpret_cast<Time>(dlsym(m_library, "time"));
    if (m_time == nullptr) throw std::runtime_error("no time in the C library");
  }
  ~LibraryTime() { dlclose(m_library); }
  LibraryTime(const LibraryTime&) = delete;
  LibraryTime& operator=(const LibraryTime&) = delete;

  using Time = time_t (*)(time_t* result);
  [[nodiscard]] Time get() const { return m_time; }

 private:
  void* m_library;
  Time m_time = nullptr;
};

// While it lives, this process's time calls read the machine's clock, as those of a telephone do.
class MachineClock {
 public:
  MachineClock() : m_before(host::processClockIfAny()) { host::setProcessClock(nullptr); }
  ~MachineClock() { host::setProcessClock(m_before); }
  MachineClock(const MachineClock&) = delete;
  MachineClock& operator=(const MachineClock&) = delete;

 private:
  host::VirtualClock* const m_before;
};

// What getTime() cannot do without.
std::string barePrintedTime(LibraryTime::Time timeCall) {
  const time_t now = timeCall(nullptr);
  tm local{};
  localtime_r(&now, &local);
  std::array<char, 20> text{};
  boundedPrint(text, "%02d:%02d", local.tm_hour, local.tm_min);
  return text.data();
}

std::string barePrintedUtc(int seconds) {
  const time_t instant = seconds;
  tm utc{};
  gmtime_r(&instant, &utc);
  std::array<char, 26> text{};
  boundedPrint(text, "%04d-%02d-%02dT%02d:%02d:%02d%c%02d:%02d", utc.tm_year + 1900, utc.tm_mon + 1,
               utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, '+', 0, 0);
  return text.data();
}

double costOfGetTime(Telephone& telephone) {
  return processorNanoseconds([&](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(telephone.service().getTime());
  });
}

double costOfBareTime(LibraryTime::Time timeCall) {
  return processorNanoseconds([&](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(barePrintedTime(timeCall));
  });
}

template <class Ask>
std::size_t allocationsOf(Ask ask) {
  const HeapCount count;
  benchmark::DoNotOptimize(ask());
  return count.allocations();
}

// A count of none says something only where one would be seen: this answer is longer than a string
// holds without the heap.
void requireThatItCounts(Telephone& telephone) {
  if (allocationsOf([&] { return telephone.service().getUTCTime(1); }) >= 1) return;
  throw std::runtime_error("allocations of the plug-in are not counted");
}

// Allocations of many calls, around full hours, midnights and changes to and from daylight saving.
std::size_t allocationsOfGetTime(Telephone& telephone) {
  constexpr int kHours = 365 * 24;
  std::size_t allocations = 0;
  requireThatItCounts(telephone);
  telephone.clock().setSpeed(0);
  for (int i = 0; i < 2 * kHours; ++i) {
    telephone.clock().advance(std::chrono::seconds(i % 2 == 0 ? 3599 : 1));
    allocations += allocationsOf([&] { return telephone.service().getTime(); });
  }
  return allocations;
}

template <class Print>
double costOfInstants(Print print) {
  return processorNanoseconds([&](benchmark::State& state) {
    int seconds = 1'600'000'000;
    for (auto _ : state) benchmark::DoNotOptimize(print(++seconds));
  });
}

// The way back of a request that nobody waits for.
class Dropped : public InvokerResponse {
 public:
  const char* getCodecName() override { return "msgpack"; }
  const char* getReplyAddress() override { return "client-1"; }
  void sendReply(const char* data, int length) override {
    benchmark::DoNotOptimize(data);
    benchmark::DoNotOptimize(length);
  }
};

std::string requestFor(const char* name, host::CodecTable& codecs) {
  Method method(name, Method::call);
  std::stringstream stream;
  codecs.find(host::kDefaultCodec)->encode(method, stream);
  return stream.str();
}

double costOfMessage(Telephone& telephone, const std::string& request) {
  host::Device& device = telephone.device();
  return processorNanoseconds([&](benchmark::State& state) {
    for (auto _ : state)
      device.invoker().handleMessage(&device.service(), request.data(),
                                     static_cast<int>(request.size()), new Dropped);
  });
}

}  // namespace

void measureGetTime(Findings& findings) {
  const Folder folder;
  AskedTelephone telephone(folder);
  const LibraryTime library;
  Rounds machine;
  Rounds virtualClock;
  Rounds beside;
  for (std::size_t i = 0; i < Rounds::kUsual; ++i) {
    const double bare = costOfBareTime(library.get());
    {
      const MachineClock clock;
      machine.add(costOfGetTime(telephone), bare);
    }
    const double asked = costOfGetTime(telephone);
    virtualClock.add(asked, costOfBareTime(time));
    beside.add(asked, bare);
  }
  findings["get-time"] = ratioOf(machine);
  findings["get-time-virtual"] = ratioOf(virtualClock);
  findings["get-time-beside"] = ratioOf(beside);
  findings["get-time-heap"] = alone(static_cast<double>(allocationsOfGetTime(telephone)));
}

void measureGetUtcTime(Findings& findings) {
  const Folder folder;
  AskedTelephone telephone(folder);
  const auto asked = [&](int seconds) { return telephone.service().getUTCTime(seconds); };
  findings["get-utc-time"] = ratioOf(Rounds::alternate(
      [&] { return costOfInstants(asked); }, [] { return costOfInstants(barePrintedUtc); }));
}

void measureHandleMessage(Findings& findings) {
  const Folder folder;
  AskedTelephone telephone(folder);
  const std::string request = requestFor("getTime", telephone.codecs());
  findings["handle-message"] = differenceOf(
      Rounds::alternate([&] { return costOfMessage(telephone, request) / kInMicroseconds; },
                        [&] { return costOfGetTime(telephone) / kInMicroseconds; }));
}

}  // namespace bench
