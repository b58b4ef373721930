#include "verbs/CheckedRequest.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "verbs/UsageError.h"

namespace host {
namespace {

// The checked request, or the error line.
std::string checked(const Json& request) {
  try {
    return checkedRequest(request).dump();
  } catch (const UsageError& error) {
    return error.what();
  }
}

TEST(CheckedRequest, GivesAnInstantItsTwentyFiveCharacters) {
  for (const char* const instant : {"2026-03-08T06:59:50Z", "2026-03-08T06:59:50+00:00",
                                    "2026-03-08T01:59:50-05:00", "2026-03-08T12:29:50+05:30"}) {
    EXPECT_EQ(checked({{"verb", "set"}, {"key", "time"}, {"value", instant}}),
              R"({"verb":"set","key":"time","value":"2026-03-08T06:59:50+00:00"})");
  }
}

TEST(CheckedRequest, LeavesOtherRequestsAsTheyAre) {
  for (const char* const request :
       {R"({"verb":"set","key":"time","local":"2026-03-08 01:59:50"})",
        R"({"verb":"set","key":"simple-time","value":"noon"})", R"({"verb":"get","key":"time"})",
        R"({"verb":"keys"})", R"({"verb":"call","method":"getTime","arguments":[]})",
        R"({"verb":"inject","what":"value","key":"mac-addr","value":"x"})"}) {
    EXPECT_EQ(checked(Json::parse(request)), request);
  }
}

TEST(CheckedRequest, RefusesWhatAHostCouldOnlyRefuse) {
  for (const char* const request :
       {R"({"verb":"set","key":"time","value":""})",
        R"({"verb":"set","key":"time","value":"2026-03-08T06:59:60Z"})",
        R"({"verb":"set","key":"time","local":""})",
        R"({"verb":"set","key":"time","local":"2026-03-08T06:59:50Z"})",
        R"({"verb":"set","key":"Time","value":"x"})",
        R"({"verb":"call","method":"gettime","arguments":[]})",
        R"({"verb":"call","method":"setTimeInt","arguments":[]})",
        R"({"verb":"call","method":"getTime","arguments":["getTimeStringReturn=x"]})",
        R"({"verb":"inject","what":"value","key":"time","value":"x"})"}) {
    EXPECT_THROW(static_cast<void>(checkedRequest(Json::parse(request))), UsageError) << request;
  }
}

}  // namespace
}  // namespace host
