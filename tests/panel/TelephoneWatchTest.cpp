#include "telephone/TelephoneWatch.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "SilentHost.h"

namespace panel {
namespace {

TEST(TelephoneWatch, EndsWithoutTheAnswerOfItsHost) {
  const SilentHost silent;
  std::string why;
  {
    const TelephoneWatch watch(silent.sockets(), [&](const std::string&, const host::Json& value) {
      why = value.at("why");
    });
    silent.waitForClient();
  }
  EXPECT_THAT(why, testing::StartsWith("the host disconnected"));
}

}  // namespace
}  // namespace panel
