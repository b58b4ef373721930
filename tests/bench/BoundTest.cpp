#include "Bound.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using bench::Bound;
using Kind = Bound::Kind;

struct Limit {
  Bound bound;
  double holds;   // the last that does
  double breaks;  // the first that does not
};

void expectLimit(const Limit& row) {
  EXPECT_TRUE(row.bound.holds(row.holds)) << row.bound.text() << ": " << row.holds;
  EXPECT_FALSE(row.bound.holds(row.breaks)) << row.bound.text() << ": " << row.breaks;
}

TEST(Bound, HoldsUpToItsLimit) {
  for (const Limit& row : std::vector<Limit>{{{Kind::ratioAtMost, 1.5}, 1.5, 1.501},
                                             {{Kind::ratioAtLeast, 0.6}, 0.6, 0.599},
                                             {{Kind::differenceAtMost, 0.6}, 0.6, 0.601},
                                             {{Kind::atMost, 50}, 50, 50.01},
                                             {{Kind::exactly, 1}, 1, 0},
                                             {{Kind::exactly, 1}, 1, 2}}) {
    expectLimit(row);
  }
  EXPECT_TRUE((Bound{Kind::none, 0}.holds(1e9)));
}

TEST(Bound, IsNotMetByNaN) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  for (const Kind kind : {Kind::ratioAtMost, Kind::ratioAtLeast, Kind::differenceAtMost,
                          Kind::atMost, Kind::exactly}) {
    EXPECT_FALSE((Bound{kind, 1}.holds(none))) << static_cast<int>(kind);
  }
}

TEST(Bound, OfATimeIsWidened) {
  for (const Limit& row : std::vector<Limit>{{{Kind::ratioAtMost, 2}, 3, 3.001},
                                             {{Kind::ratioAtLeast, 0.6}, 0.4001, 0.399},
                                             {{Kind::differenceAtMost, 0.6}, 0.899, 0.901},
                                             {{Kind::atMost, 50}, 75, 75.01}}) {
    expectLimit({row.bound.widened(1.5), row.holds, row.breaks});
  }
}

TEST(Bound, OfACountIsNotWidened) {
  for (const Limit& row : std::vector<Limit>{{{Kind::exactly, 1, false}, 1, 0},
                                             {{Kind::differenceAtMost, 1024, false}, 1024, 1025},
                                             {{Kind::atMost, 5, false}, 5, 5.1}}) {
    expectLimit({row.bound.widened(1.5), row.holds, row.breaks});
  }
}

TEST(Bound, HasAText) {
  EXPECT_EQ((Bound{Kind::ratioAtMost, 1.25}.text()), "<= 1.25 x");
  EXPECT_EQ((Bound{Kind::ratioAtLeast, 0.6}.text()), ">= 0.6 x");
  EXPECT_EQ((Bound{Kind::differenceAtMost, 0.6}.text()), "<= + 0.6");
  EXPECT_EQ((Bound{Kind::atMost, 5}.text()), "<= 5");
  EXPECT_EQ((Bound{Kind::exactly, 1}.text()), "= 1");
  EXPECT_EQ((Bound{Kind::none, 0}.text()), "-");
}

}  // namespace
