#include "runtime/Plugin.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "Invoker.h"
#include "Proxy.h"
#include "Service.h"
#include "host/runtime/TestPlugins.h"
#include "support/ErrorOf.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

using ::testing::HasSubstr;

std::string loadingError(const std::filesystem::path& file) {
  return errorOf([&] { const Plugin plugin(file); });
}

TEST(Plugin, CreatesTheThreeKindsOfObjects) {
  Plugin plugin(testPlugin("full"));
  const std::unique_ptr<Service> service(plugin.createService());
  const std::unique_ptr<Invoker> invoker(plugin.createInvoker());
  const std::unique_ptr<Proxy> first(plugin.createProxy());
  const std::unique_ptr<Proxy> second(plugin.createProxy());
  EXPECT_NE(service, nullptr);
  EXPECT_NE(invoker, nullptr);
  EXPECT_NE(first, second);
}

TEST(Plugin, MissingFileIsRefusedWithItsNameAndTheFactory) {
  EXPECT_EQ(loadingError("/no/such/plugin.so"),
            "plug-in \"/no/such/plugin.so\": no such file (wanted for its factory "
            "createClockService)");
}

TEST(Plugin, FileThatIsNoLibraryIsRefusedWithTheReason) {
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

// It ends in the headers, in what the loader maps, or in the section table behind that.
TEST(Plugin, TruncatedFileIsRefusedAtEachLength) {
  const support::TemporaryFolder folder;
  const auto file = folder / "plugin.so";
  std::filesystem::copy_file(testPlugin("full"), file);
  const auto whole = std::filesystem::file_size(file);
  for (const std::uintmax_t size :
       {whole - 1, whole / 2, std::uintmax_t{4096}, std::uintmax_t{100}, std::uintmax_t{64}}) {
    std::filesystem::resize_file(file, size);
    EXPECT_THAT(loadingError(file),
                HasSubstr("it is cut off, with " + std::to_string(size) + " of "))
        << size << ": " << loadingError(file);
  }
  for (const std::uintmax_t size : {10U, 0U}) {
    std::filesystem::resize_file(file, size);
    EXPECT_THAT(loadingError(file), HasSubstr("it is not a shared object")) << size;
  }
}

TEST(Plugin, FileOfAnotherWordSizeIsRefused) {
  const support::TemporaryFolder folder;
  const auto file = folder / "plugin.so";
  std::filesystem::copy_file(testPlugin("full"), file);
  std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
  stream.seekg(4);
  const int other = stream.get() == 2 ? 1 : 2;
  stream.seekp(4);
  stream.put(static_cast<char>(other)).flush();
  EXPECT_THAT(loadingError(file), HasSubstr("another kind of processor"));
}

TEST(Plugin, FolderFifoAndDeviceAreRefused) {
  const support::TemporaryFolder folder;
  const auto fifo = folder / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::filesystem::path& file :
       {fifo, folder.path(), std::filesystem::path("/dev/zero")}) {
    EXPECT_THAT(loadingError(file), HasSubstr("it is not a regular file")) << file;
  }
}

TEST(Plugin, AbsentFactoryIsRefusedWithTheFilesName) {
  const auto file = testPlugin("without_proxy");
  EXPECT_EQ(loadingError(file), "plug-in \"" + file.string() +
                                    "\": the factory createClockServiceObserverProxy is absent");
}

}  // namespace
}  // namespace host
