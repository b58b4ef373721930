#include "Processor.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <string>
#include <system_error>
#include <thread>

namespace {

// On a thread of its own: the others keep their processors.
template <class Body>
void apart(Body body) {
  std::thread(body).join();
}

TEST(Processor, IsTheOnlyOneAfterwards) {
  apart([] {
    const std::size_t last = bench::lastProcessor();
    bench::pinTo(last);
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    ASSERT_EQ(sched_getaffinity(0, sizeof allowed, &allowed), 0);
    EXPECT_EQ(CPU_COUNT(&allowed), 1);
    EXPECT_TRUE(CPU_ISSET(last, &allowed));
  });
}

TEST(Processor, ThatIsNotThereIsAnErrorThatNamesIt) {
  apart([] {
    try {
      bench::pinTo(CPU_SETSIZE - 1);
      FAIL() << "nothing was thrown";
    } catch (const std::system_error& error) {
      const std::string words = error.what();
      EXPECT_NE(words.find("cannot stay on processor 1023"), std::string::npos) << words;
      EXPECT_EQ(words.find('\n'), std::string::npos);
    }
  });
}

}  // namespace
