#include "operator/ChildProcesses.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/framework/ChildProcess.h"

namespace {

TEST_F(ChildProcess, IsFoundByTheNamesThatItWasStartedWith) {
  const auto child = process({"/bin/cat", pipePath(), "/bin/third"});
  const pid_t id = child->launch();
  ASSERT_GT(id, 0);
  const std::ofstream writer(pipePath());  // opens once the child reads, which then waits
  EXPECT_EQ(host::childRunning("cat"), id);
  EXPECT_EQ(host::childRunning("pipe"), id) << "as a script of an interpreter is";
  EXPECT_EQ(host::childRunning("third"), std::nullopt);
  EXPECT_EQ(host::childRunning("dog"), std::nullopt);
  EXPECT_EQ(host::commandLineOf(id), "/bin/cat " + std::string(pipePath()) + " /bin/third");
  EXPECT_EQ(host::commandLineOf(-1), "");
}

}  // namespace
