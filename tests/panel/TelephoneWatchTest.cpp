#include "telephone/TelephoneWatch.h"

#include <gmock/gmock.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <nlohmann/json.hpp>
#include <vector>

#include "SilentHost.h"

namespace panel {
namespace {

TEST(TelephoneWatch, EndsWithoutTheAnswerOfItsHost) {
  SilentHost silent;
  std::string why;
  {
    const TelephoneWatch watch(silent.sockets(), [&](const std::string&, const host::Json& value) {
      why = value.at("why");
    });
    silent.waitForRequest();
  }
  EXPECT_THAT(why, testing::StartsWith("the host disconnected"));
}

TEST(TelephoneWatch, IsPokedOnceWhileItLooksForItsHost) {
  using Clock = std::chrono::steady_clock;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Clock::time_point> looks;
  TelephoneWatch watch({"/nowhere", "/nowhere"}, [&](const std::string&, const host::Json&) {
    const std::lock_guard lock(mutex);
    looks.push_back(Clock::now());
    changed.notify_one();
  });
  watch.poke();
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return looks.size() >= 3; });
  EXPECT_GT(looks[2] - looks[0], std::chrono::milliseconds(400));
}

}  // namespace
}  // namespace panel
