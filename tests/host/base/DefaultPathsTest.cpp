#include "base/DefaultPaths.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "base/Error.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

using Variables = std::map<std::string, std::string>;

Environment environmentOf(const Variables& variables) {
  return [variables](const char* name) -> std::optional<std::string> {
    const auto found = variables.find(name);
    if (found == variables.end()) return std::nullopt;
    return found->second;
  };
}

class BuildTree : public ::testing::Test {
 protected:
  BuildTree() { std::ofstream(folder / "CMakeCache.txt") << "cache"; }
  support::TemporaryFolder folder;
};

TEST_F(BuildTree, KeepsEverythingInTheBuild) {
  for (const char* const program : {"bin/clockhost", "bin/tests/some_test"}) {
    const DefaultPaths paths = defaultPaths(folder / program, environmentOf({}));
    EXPECT_EQ(paths.plugin, folder / "lib/libClockService.so");
    EXPECT_EQ(paths.state, folder / "run/state");
    EXPECT_EQ(paths.socket, folder / "run/clockhost.sock");
    EXPECT_EQ(paths.standIns, folder / "bin");
  }
}

TEST_F(BuildTree, DoesNotIncludeAnInstallationBelowIt) {
  const DefaultPaths paths =
      defaultPaths(folder / "install/bin/clockhost", environmentOf({{"HOME", "/home"}}));
  EXPECT_EQ(paths.plugin, folder / "install/lib/libClockService.so");
  EXPECT_EQ(paths.state, "/home/.local/state/clockhost");
}

DefaultPaths pathsWhenInstalled(const Variables& variables) {
  return defaultPaths("/opt/clock/bin/clockhost", environmentOf(variables));
}

TEST(InstalledProgram, UsesTheStateAndRuntimeFolders) {
  const DefaultPaths paths =
      pathsWhenInstalled({{"XDG_STATE_HOME", "/s"}, {"XDG_RUNTIME_DIR", "/r"}, {"HOME", "/home"}});
  EXPECT_EQ(paths.plugin, "/opt/clock/lib/libClockService.so");
  EXPECT_EQ(paths.standIns, "/opt/clock/libexec/clockhost");
  EXPECT_EQ(paths.state, "/s/clockhost");
  EXPECT_EQ(paths.socket, "/r/clockhost.sock");
}

TEST(InstalledProgram, PutsTheSocketIntoTheStateFolderWithoutARuntimeFolder) {
  EXPECT_EQ(pathsWhenInstalled({{"XDG_STATE_HOME", "/s"}}).socket, "/s/clockhost/clockhost.sock");
}

TEST(InstalledProgram, IgnoresRelativeFolders) {
  const DefaultPaths paths =
      pathsWhenInstalled({{"XDG_STATE_HOME", "s"}, {"XDG_RUNTIME_DIR", ""}, {"HOME", "/home"}});
  EXPECT_EQ(paths.state, "/home/.local/state/clockhost");
  EXPECT_EQ(paths.socket, "/home/.local/state/clockhost/clockhost.sock");
}

TEST(InstalledProgram, NeedsAHomeOrAStateFolder) {
  EXPECT_THROW(static_cast<void>(pathsWhenInstalled({})), Error);
}

TEST(ThisProgram, IsInABuild) {
  EXPECT_EQ(defaultPaths().socket.filename(), "clockhost.sock");
  EXPECT_EQ(defaultPaths().socket.parent_path().filename(), "run");
}

}  // namespace
}  // namespace host
