#include "framework/ProgramMap.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>

#include "support/TemporaryFolder.h"

namespace {

class DevicePrograms : public testing::Test {
 protected:
  ~DevicePrograms() override { m_map.clear(); }

  std::string program(const std::string& name, bool executable = true) const {
    std::string path = m_folder / name;
    std::ofstream(path) << "#!/bin/sh\n";
    if (executable) std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  [[nodiscard]] std::optional<std::string> resolved(const std::string& devicePath) const {
    const auto program = m_map.resolve(devicePath);
    return program ? std::optional(program->path) : std::nullopt;
  }

  const support::TemporaryFolder m_folder;
  host::ProgramMap& m_map = host::ProgramMap::instance();
};

TEST_F(DevicePrograms, DoNotRunUnlessAllowed) {
  const support::TemporaryFolder standIns;
  m_map.setStandInFolder(standIns.path());
  const std::string own = program("client");
  EXPECT_EQ(resolved(own), std::nullopt);
  EXPECT_EQ(resolved("/bin/sh"), std::nullopt);
  m_map.allowDevicePrograms();
  EXPECT_EQ(resolved(own), own);
}

TEST_F(DevicePrograms, AreMappedFirstOfAll) {
  const std::string own = program("client");
  m_map.set(own, "/elsewhere/client");
  EXPECT_EQ(resolved(own), "/elsewhere/client");
  m_map.set(own, "/third/client");
  EXPECT_EQ(resolved(own), "/third/client");
}

TEST_F(DevicePrograms, AreReplacedByStandIns) {
  const support::TemporaryFolder standIns;
  std::filesystem::copy(program("client"), standIns / "client");
  m_map.setStandInFolder(standIns.path());
  m_map.allowDevicePrograms();
  for (const std::string& path : {std::string(m_folder / "client"), std::string("/sbin/client")}) {
    EXPECT_EQ(resolved(path), (standIns / "client").string());
  }
  EXPECT_EQ(resolved("/sbin/other"), "/sbin/other");
}

TEST_F(DevicePrograms, AreNotReplacedByFilesThatCannotBeExecuted) {
  program("plain", false);
  m_map.setStandInFolder(m_folder.path());
  EXPECT_EQ(resolved("/sbin/plain"), std::nullopt);
}

TEST_F(DevicePrograms, AreClearedTogether) {
  program("client");
  m_map.set("/sbin/a", "/b");
  m_map.setStandInFolder(m_folder.path());
  m_map.allowDevicePrograms();
  m_map.clear();
  for (const char* const path : {"/sbin/a", "/sbin/client", "/bin/sh"}) {
    EXPECT_EQ(resolved(path), std::nullopt);
  }
}

TEST_F(DevicePrograms, HaveAnOutputByTheirNameOnTheDevice) {
  m_map.set("/sbin/client", "/usr/bin/other");
  EXPECT_FALSE(m_map.resolve("/sbin/client")->openOutput);
  std::string asked;
  m_map.setOutput([&](const std::string& program) {
    asked = program;
    return host::Descriptor();
  });
  EXPECT_FALSE(m_map.resolve("/sbin/client")->openOutput().valid());
  EXPECT_EQ(asked, "client");
  m_map.setOutput({});
  EXPECT_FALSE(m_map.resolve("/sbin/client")->openOutput);
}

// Without a lock, the changes of one thread would lose some of the other's.
TEST_F(DevicePrograms, CanBeUsedOnTwoThreads) {
  const auto useWith = [this](const std::string& folder) {
    for (int i = 0; i < 10'000; ++i) {
      const std::string path = folder + std::to_string(i);
      m_map.allowDevicePrograms();
      m_map.set(path, path);
      EXPECT_EQ(resolved(path), path);
    }
  };
  std::thread other(useWith, "/a/");
  useWith("/b/");
  other.join();
}

}  // namespace
