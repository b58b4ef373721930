#include "UniqueNames.h"

#include <gtest/gtest.h>

#include <array>

namespace {

struct Row {
  const char* name;
};

TEST(UniqueNames, AreComparedWithAllEarlierRows) {
  EXPECT_TRUE(namesAreUnique(std::array<Row, 3>{{{"a"}, {"b"}, {"ab"}}}));
  EXPECT_FALSE(namesAreUnique(std::array<Row, 3>{{{"a"}, {"a"}, {"b"}}}));
  EXPECT_FALSE(namesAreUnique(std::array<Row, 3>{{{"a"}, {"b"}, {"a"}}}));
}

}  // namespace
