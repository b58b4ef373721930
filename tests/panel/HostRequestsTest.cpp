#include "telephone/HostRequests.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "SilentHost.h"
#include "support/ErrorOf.h"

namespace panel {
namespace {

using Words = std::vector<std::string>;

TEST(HostRequests, EndWithThePanel) {
  const SilentHost silent;
  std::stop_source ending;
  ending.request_stop();
  for (const Words& words :
       {Words{"call", "getTime"}, Words{"status"}, Words{"clock", "advance", "1h"}}) {
    EXPECT_THAT(
        errorOf([&] { static_cast<void>(answerOf(silent.sockets(), words, ending.get_token())); }),
        testing::StartsWith("the host disconnected"))
        << words.front();
  }
}

TEST(HostRequests, EndWithThePanelWhileTheyWaitForTheHost) {
  SilentHost silent;
  std::stop_source ending;
  const std::jthread panel([&] {
    silent.waitForRequest();
    ending.request_stop();
  });
  const Words words = {"call", "getTime"};
  EXPECT_THAT(
      errorOf([&] { static_cast<void>(answerOf(silent.sockets(), words, ending.get_token())); }),
      testing::StartsWith("the host disconnected"));
}

}  // namespace
}  // namespace panel
