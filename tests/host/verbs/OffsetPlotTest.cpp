#include "verbs/OffsetPlot.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "base/Error.h"

namespace host {
namespace {

TEST(OffsetPlot, DrawsAStepAndAMarkForEachChange) {
  const std::string svg = offsetPlot(Json::parse(R"({"offsets":[
      {"seconds":1466035200,"offset":-14400},{"seconds":1478412000,"offset":-18000},
      {"seconds":1489302000,"offset":-14400}]})"));
  EXPECT_TRUE(svg.starts_with("<svg xmlns=")) << svg;
  EXPECT_TRUE(svg.ends_with("</svg>\n"));
  // 143 and 269 days after the begin, at 780 for 365 days.
  EXPECT_NE(svg.find("d=\"M90 117 H90 V117 H396 V184 H665 V117 H870\""), std::string::npos) << svg;
  EXPECT_NE(svg.find(">2016-11-06T06:00:00Z<"), std::string::npos);
  EXPECT_NE(svg.find(">UTC-05:00<"), std::string::npos);
  EXPECT_NE(svg.find(">2017-01<"), std::string::npos);
}

TEST(OffsetPlot, OfAFixedZoneIsALine) {
  const std::string svg = offsetPlot(Json::parse(R"({"offsets":[{"seconds":0,"offset":3600}]})"));
  EXPECT_NE(svg.find("d=\"M90 150 H90 V150 H870\""), std::string::npos) << svg;
  EXPECT_EQ(svg.find("<circle"), std::string::npos);
}

TEST(OffsetPlot, NeedsOffsets) {
  for (const char* const answer : {"{}", R"({"offsets":5})", R"({"offsets":[{"seconds":"x"}]})"}) {
    EXPECT_THROW(static_cast<void>(offsetPlot(Json::parse(answer))), Json::exception) << answer;
  }
  for (const char* const step :
       {R"({"seconds":7258118400,"offset":0})", R"({"seconds":-1,"offset":0})",
        R"({"seconds":0,"offset":86401})"}) {
    const Json answer = Json::parse(R"({"offsets":[)" + std::string(step) + "]}");
    EXPECT_THROW(static_cast<void>(offsetPlot(answer)), Error) << step;
  }
}

}  // namespace
}  // namespace host
