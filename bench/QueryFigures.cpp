// getTime() in this process, called and by message.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <time.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>

#include "Alternate.h"
#include "Instructions.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "Measure.h"
#include "Method.h"
#include "Telephone.h"

namespace bench {
namespace {

constexpr int kCallsInARow = 1000;  // of one side, before the other's turn
constexpr std::size_t kPairs = 50;

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

double costOfGetTime(Telephone& telephone) {
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

// Drops the reply.
class Dropped : public InvokerResponse {
 public:
  const char* getCodecName() override { return "msgpack"; }
  const char* getReplyAddress() override { return "client-1"; }
  void sendReply(const char* data, int length) override {
    benchmark::DoNotOptimize(data);
    benchmark::DoNotOptimize(length);
  }
};

std::string requestFor(const char* name, Telephone& telephone) {
  Method method(name, Method::call);
  std::stringstream stream;
  telephone.codecs().find(host::kDefaultCodec)->encode(method, stream);
  return stream.str();
}

}  // namespace

// Both ask the machine's clock.
Found measureGetTime() {
  Telephone telephone;
  const MachineClock clock;
  return alternately(
      kPairs, [&] { return costOfGetTime(telephone); },
      [] { return costOf([] { benchmark::DoNotOptimize(printedTime()); }); });
}

Found measureGetTimeInstructions() {
  Telephone telephone;
  const MachineClock clock;
  const auto count = [](const auto& call) { return static_cast<double>(instructionsOf(call)); };
  return {count([&] { benchmark::DoNotOptimize(telephone.service().getTime()); }),
          count([] { benchmark::DoNotOptimize(printedTime()); })};
}

Found measureMessage() {
  constexpr double kInMicroseconds = 1000;
  Telephone telephone;
  const std::string request = requestFor("getTime", telephone);
  const auto message = [&] {
    telephone.device().invoker().handleMessage(&telephone.device().service(), request.data(),
                                               static_cast<int>(request.size()), new Dropped);
  };
  return alternately(
      kPairs, [&] { return costOf(message) / kInMicroseconds; },
      [&] { return costOfGetTime(telephone) / kInMicroseconds; });
}

}  // namespace bench
