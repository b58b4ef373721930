#include "runtime/Plugin.h"

#include <gtest/gtest.h>

#include <fstream>

#include "Invoker.h"
#include "Proxy.h"
#include "Service.h"
#include "host/runtime/TestPlugins.h"
#include "support/ErrorOf.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

std::string loadingError(const std::filesystem::path& file) {
  return errorOf([&] { const Plugin plugin(file); });
}

TEST(Plugin, MakesTheThreeKindsOfObjects) {
  Plugin plugin(testPlugin("full"));
  const std::unique_ptr<Service> service(plugin.createService());
  const std::unique_ptr<Invoker> invoker(plugin.createInvoker());
  const std::unique_ptr<Proxy> first(plugin.createProxy());
  const std::unique_ptr<Proxy> second(plugin.createProxy());
  EXPECT_NE(service, nullptr);
  EXPECT_NE(invoker, nullptr);
  EXPECT_NE(first, second);
}

TEST(Plugin, MissingFileIsNamedWithTheFactory) {
  EXPECT_EQ(loadingError("/no/such/plugin.so"),
            "plug-in \"/no/such/plugin.so\": no such file (wanted for its factory "
            "createClockService)");
}

TEST(Plugin, FileThatIsNoLibraryIsNamedWithTheFactoryAndTheReason) {
  const support::TemporaryFolder folder;
  const auto file = folder / "plugin.so";
  std::ofstream(file) << "not a library";
  const std::string error = loadingError(file);
  EXPECT_EQ(error.find("plug-in \"" + file.string() +
                       "\": cannot be loaded (wanted for its "
                       "factory createClockService): "),
            0U)
      << error;
  EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  EXPECT_EQ(error.rfind(file.string()), error.find(file.string())) << error;
}

TEST(Plugin, AbsentFactoryIsNamedWithTheFile) {
  const auto file = testPlugin("without_proxy");
  EXPECT_EQ(loadingError(file), "plug-in \"" + file.string() +
                                    "\": the factory createClockServiceObserverProxy is absent");
}

TEST(Plugin, FactoryReturningNullIsNamedWithTheFile) {
  Plugin service(testPlugin("null_service"));
  Plugin invoker(testPlugin("null_invoker"));
  Plugin proxy(testPlugin("null_proxy"));
  const auto expected = [](const Plugin& plugin, const std::string& factory) {
    return "plug-in \"" + plugin.file().string() + "\": the factory " + factory + " returned null";
  };
  EXPECT_EQ(errorOf([&] { static_cast<void>(service.createService()); }),
            expected(service, "createClockService"));
  EXPECT_EQ(errorOf([&] { static_cast<void>(invoker.createInvoker()); }),
            expected(invoker, "createClockServiceInvoker"));
  EXPECT_EQ(errorOf([&] { static_cast<void>(proxy.createProxy()); }),
            expected(proxy, "createClockServiceObserverProxy"));
}

}  // namespace
}  // namespace host
