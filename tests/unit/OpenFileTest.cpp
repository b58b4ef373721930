#include "OpenFile.h"

#include <gtest/gtest.h>

namespace {

// Otherwise it would close a file that has been opened under the same number since.
TEST(OpenFile, ClosesItsFileOnce) {
  OpenFile file;
  EXPECT_EQ(file.number(), -1);
  ASSERT_TRUE(file.open("/dev/null", O_RDONLY));
  const int number = file.number();
  EXPECT_GE(number, 0);
  file.close();
  EXPECT_EQ(file.number(), -1);
  EXPECT_EQ(fcntl(number, F_GETFD), -1);
}

TEST(OpenFile, ClosesItsFileAtTheEndOfItsLife) {
  int number = -1;
  {
    OpenFile file;
    ASSERT_TRUE(file.open("/dev/null", O_RDONLY));
    number = file.number();
  }
  EXPECT_EQ(fcntl(number, F_GETFD), -1);
}

TEST(OpenFile, ClosesAFileThatGetsTheNumberZero) {
  const int standardInput = dup(0);
  close(0);
  OpenFile file;
  EXPECT_TRUE(file.open("/dev/null", O_RDONLY));
  EXPECT_EQ(file.number(), 0);
  file.close();
  EXPECT_EQ(fcntl(0, F_GETFD), -1);
  dup2(standardInput, 0);
  close(standardInput);
}

TEST(OpenFile, HoldsNoneAfterAFailedOpen) {
  OpenFile file;
  EXPECT_FALSE(file.open("/no/such/file", O_RDONLY));
  EXPECT_LT(file.number(), 0);
}

}  // namespace
