#include "platform/ProgramMap.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

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

  const support::TemporaryFolder m_folder;
  host::ProgramMap& m_map = host::ProgramMap::instance();
};

TEST_F(DevicePrograms, AreThemselvesWhenNothingIsKnown) {
  EXPECT_EQ(m_map.resolve("/sbin/not-here"), "/sbin/not-here");
  EXPECT_EQ(m_map.resolve(""), "");
}

TEST_F(DevicePrograms, AreWhatWasSetBeforeAllElse) {
  const std::string own = program("client");
  m_map.set(own, "/elsewhere/client");
  EXPECT_EQ(m_map.resolve(own), "/elsewhere/client");
  m_map.set(own, "/third/client");
  EXPECT_EQ(m_map.resolve(own), "/third/client");
}

TEST_F(DevicePrograms, AreThemselvesBeforeAStandIn) {
  const support::TemporaryFolder standIns;
  std::filesystem::copy(program("client"), standIns / "client");
  m_map.setStandInFolder(standIns.path());
  EXPECT_EQ(m_map.resolve(m_folder / "client"), (m_folder / "client").string());
}

TEST_F(DevicePrograms, AreStandInsWhenTheyAreNotHere) {
  const std::string standIn = program("client");
  m_map.setStandInFolder(m_folder.path());
  EXPECT_EQ(m_map.resolve("/sbin/not-here/client"), standIn);
  EXPECT_EQ(m_map.resolve("/sbin/not-here/other"), "/sbin/not-here/other");
}

TEST_F(DevicePrograms, AreNotFilesThatCannotBeExecuted) {
  program("plain", false);
  m_map.setStandInFolder(m_folder.path());
  EXPECT_EQ(m_map.resolve("/sbin/not-here/plain"), "/sbin/not-here/plain");
}

TEST_F(DevicePrograms, AreForgottenTogether) {
  program("client");
  m_map.set("/sbin/not-here/a", "/b");
  m_map.setStandInFolder(m_folder.path());
  m_map.clear();
  EXPECT_EQ(m_map.resolve("/sbin/not-here/a"), "/sbin/not-here/a");
  EXPECT_EQ(m_map.resolve("/sbin/not-here/client"), "/sbin/not-here/client");
}

}  // namespace
