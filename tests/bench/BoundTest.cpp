#include "Bound.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using bench::Bound;
using bench::Measured;
using Kind = Bound::Kind;

struct Limit {
  Bound bound;
  double holds;   // the last that does
  double breaks;  // the first that does not
};

void expectLimit(const Limit& row) {
  EXPECT_TRUE(row.bound.holds({0, 0, row.holds})) << row.bound.text() << ": " << row.holds;
  EXPECT_FALSE(row.bound.holds({0, 0, row.breaks})) << row.bound.text() << ": " << row.breaks;
}

TEST(Bound, HoldsUpToItsLimit) {
  for (const Limit& row : std::vector<Limit>{{{Kind::ratioAtMost, 1.5}, 1.5, 1.501},
                                             {{Kind::ratioAtLeast, 0.6}, 0.6, 0.599},
                                             {{Kind::differenceAtMost, 0.6}, 0.6, 0.601},
                                             {{Kind::atMost, 50}, 50, 50.01},
                                             {{Kind::exponentAtMost, 1.1}, 1.1, 1.101},
                                             {{Kind::between, 51, 50}, 51, 52},
                                             {{Kind::between, 51, 50}, 50, 49},
                                             {{Kind::between, 1, 1}, 1, 0},
                                             {{Kind::between, 1, 1}, 1, 2}}) {
    expectLimit(row);
  }
}

TEST(Bound, IsNotHeldByWhatIsNoNumber) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  for (const Kind kind : {Kind::ratioAtMost, Kind::ratioAtLeast, Kind::differenceAtMost,
                          Kind::atMost, Kind::exponentAtMost, Kind::between}) {
    EXPECT_FALSE((Bound{kind, 1}.holds({0, 0, none}))) << static_cast<int>(kind);
  }
}

TEST(Bound, WidenedLetsTakeLongerWhatIsTimed) {
  for (const Limit& row : std::vector<Limit>{{{Kind::ratioAtMost, 2}, 3, 3.001},
                                             {{Kind::ratioAtLeast, 0.6}, 0.4001, 0.399},
                                             {{Kind::differenceAtMost, 0.6}, 0.899, 0.901},
                                             {{Kind::atMost, 50}, 75, 75.01},
                                             {{Kind::exponentAtMost, 1.1}, 1.149, 1.151}}) {
    expectLimit({row.bound.widened(1.5), row.holds, row.breaks});
  }
}

TEST(Bound, WidenedLetsNothingElseBeCounted) {
  for (const Limit& row : std::vector<Limit>{{{Kind::between, 51, 50, false}, 51, 52},
                                             {{Kind::between, 1, 1, false}, 1, 0},
                                             {{Kind::differenceAtMost, 1024, 0, false}, 1024, 1025},
                                             {{Kind::atMost, 65536, 0, false}, 65536, 65537}}) {
    expectLimit({row.bound.widened(1.5), row.holds, row.breaks});
  }
}

TEST(Bound, WidenedByOneIsItself) {
  for (const Kind kind :
       {Kind::ratioAtMost, Kind::ratioAtLeast, Kind::differenceAtMost, Kind::exponentAtMost}) {
    EXPECT_DOUBLE_EQ((Bound{kind, 1.1}.widened(1).limit), 1.1) << static_cast<int>(kind);
  }
}

TEST(Bound, NoneIsHeldByAll) {
  EXPECT_TRUE((Bound{Kind::none, 0}.holds({0, 0, 1e9})));
}

TEST(Bound, TellsItself) {
  EXPECT_EQ((Bound{Kind::ratioAtMost, 1.25}.text()), "<= 1.25 x");
  EXPECT_EQ((Bound{Kind::ratioAtLeast, 0.6}.text()), ">= 0.6 x");
  EXPECT_EQ((Bound{Kind::differenceAtMost, 0.6}.text()), "<= + 0.6");
  EXPECT_EQ((Bound{Kind::exponentAtMost, 1.1}.widened(1.5).text()), "<= 1.15");
  EXPECT_EQ((Bound{Kind::between, 51, 50}.text()), "50 or 51");
  EXPECT_EQ((Bound{Kind::between, 1, 1}.text()), "= 1");
  EXPECT_EQ((Bound{Kind::none, 0}.text()), "-");
}

}  // namespace
