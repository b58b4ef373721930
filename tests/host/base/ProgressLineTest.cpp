#include "base/ProgressLine.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <optional>
#include <sstream>
#include <string>

#include "base/Descriptor.h"

namespace host {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(ProgressLine, TimeLeftComesFromTheFirstParts) {
  EXPECT_EQ(timeLeft(0, 10, seconds(5)), "");
  EXPECT_EQ(timeLeft(2, 10, seconds(5)), ", 0:20 left");
  EXPECT_EQ(timeLeft(1, 3, milliseconds(1)), ", 0:01 left");
  EXPECT_EQ(timeLeft(1, 2, seconds(3605)), ", 60:05 left");
  EXPECT_EQ(timeLeft(10, 10, seconds(5)), "");
}

TEST(ProgressLine, IsReplaced) {
  std::ostringstream err;
  ProgressLine line(3, "figures", &err);
  line.show(0);
  EXPECT_EQ(err.str(), "0 of 3 figures");
  line.hide();
  EXPECT_EQ(err.str(), "0 of 3 figures\r\x1B[K");
  err.str("");
  line.show(3, ", 1 failed");
  EXPECT_EQ(err.str(), "3 of 3 figures, 1 failed");
}

TEST(ProgressLine, ShowsNothingWithoutAStream) {
  ProgressLine line(3, "figures", nullptr);
  line.show(1);
  line.hide();
}

// A variable of the environment, restored at the end.
class Variable {
 public:
  explicit Variable(const char* name) : m_name(name) {
    if (const char* const value = ::getenv(name)) m_value = value;
  }
  ~Variable() {
    if (m_value) {
      ::setenv(m_name, m_value->c_str(), 1);
    } else {
      ::unsetenv(m_name);
    }
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  const char* const m_name;
  std::optional<std::string> m_value;
};

TEST(ProgressLine, IsForTerminalsOutsideOfCi) {
  const Variable ci("CI");
  const Variable term("TERM");
  ::unsetenv("CI");
  ::setenv("TERM", "vt100", 1);
  const Descriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY));
  const Descriptor file(::open("/dev/null", O_WRONLY));
  EXPECT_TRUE(showsProgress(terminal.get()));
  EXPECT_FALSE(showsProgress(file.get()));
  ::setenv("TERM", "dumb", 1);
  EXPECT_FALSE(showsProgress(terminal.get()));
  ::unsetenv("TERM");
  EXPECT_TRUE(showsProgress(terminal.get()));
  ::setenv("CI", "true", 1);
  EXPECT_FALSE(showsProgress(terminal.get()));
}

}  // namespace
}  // namespace host
