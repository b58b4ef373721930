#include "server/Access.h"

#include <gtest/gtest.h>

#include <regex>

namespace panel {
namespace {

using Verdict = Access::Verdict;

const std::string kToken = "0123456789abcdef0123456789abcdef";
const std::string kCookie = "clockpanel-8080=" + kToken;

Access access() {
  return {"127.0.0.1:8080", kToken};
}

struct Row {
  RequestHead head;
  Verdict verdict;
};

class AccessOfARequest : public testing::TestWithParam<Row> {};

TEST_P(AccessOfARequest, IsDecidedByItsHead) {
  const auto& [head, verdict] = GetParam();
  EXPECT_EQ(access().check(head), verdict)
      << head.method << ' ' << head.target << " host " << head.host << " origin " << head.origin
      << " cookie " << head.cookie;
}

constexpr std::string_view kHere = "127.0.0.1:8080";
constexpr std::string_view kOrigin = "http://127.0.0.1:8080";
const std::string kEntrance = "/?token=" + kToken;
// A row refers to its texts.
const std::string kOthersToo = "a=b; " + kCookie + "; c=d";
const std::string kLonger = kCookie + "0";
const std::string kOtherPort = "clockpanel-8081=" + kToken;
const std::string kLongerEntrance = kEntrance + "0";

INSTANTIATE_TEST_SUITE_P(
    Allowed, AccessOfARequest,
    testing::Values(Row{{"GET", "/", kHere, "", kCookie}, Verdict::allowed},
                    Row{{"GET", "/", "localhost:8080", "", kCookie}, Verdict::allowed},
                    Row{{"GET", "/", kHere, "", kOthersToo}, Verdict::allowed},
                    Row{{"POST", "/request", kHere, kOrigin, kCookie}, Verdict::allowed},
                    Row{{"POST", "/request", "localhost:8080", "http://localhost:8080", kCookie},
                        Verdict::allowed},
                    Row{{"GET", kEntrance, kHere, "", ""}, Verdict::enter}));

INSTANTIATE_TEST_SUITE_P(
    Refused, AccessOfARequest,
    testing::Values(
        Row{{"GET", "/", "example.org", "", kCookie}, Verdict::wrongHost},
        Row{{"GET", "/", "127.0.0.1:8081", "", kCookie}, Verdict::wrongHost},
        Row{{"GET", "/", "127.0.0.1", "", kCookie}, Verdict::wrongHost},
        Row{{"GET", "/", "", "", kCookie}, Verdict::wrongHost},
        Row{{"GET", kEntrance, "example.org", "", ""}, Verdict::wrongHost},
        Row{{"GET", "/", kHere, "http://example.org", kCookie}, Verdict::wrongOrigin},
        Row{{"GET", "/", kHere, "null", kCookie}, Verdict::wrongOrigin},
        Row{{"GET", "/", kHere, "https://127.0.0.1:8080", kCookie}, Verdict::wrongOrigin},
        Row{{"POST", "/request", kHere, "", kCookie}, Verdict::wrongOrigin},
        Row{{"POST", "/request", kHere, "http://127.0.0.1:8081", kCookie}, Verdict::wrongOrigin},
        Row{{"GET", "/", kHere, "", ""}, Verdict::noToken},
        Row{{"GET", "/", kHere, "", "clockpanel-8080="}, Verdict::noToken},
        Row{{"GET", "/", kHere, "", kOtherPort}, Verdict::noToken},
        Row{{"GET", "/", kHere, "", kLonger}, Verdict::noToken},
        Row{{"GET", "/?token=", kHere, "", ""}, Verdict::noToken},
        Row{{"GET", kLongerEntrance, kHere, "", ""}, Verdict::noToken},
        Row{{"GET", "/?token=1123456789abcdef0123456789abcdef", kHere, "", ""}, Verdict::noToken},
        Row{{"POST", kEntrance, kHere, kOrigin, ""}, Verdict::noToken}));

TEST(Access, PrintsAnAddressThatLetsIn) {
  EXPECT_EQ(access().address(), "http://127.0.0.1:8080/?token=" + kToken);
}

TEST(Access, GivesACookieThatScriptsAndOtherSitesDoNotGet) {
  EXPECT_EQ(access().cookie(), kCookie + "; Path=/; HttpOnly; SameSite=Strict");
}

TEST(Access, OfAUnixSocketIsLocalhost) {
  EXPECT_EQ(Access("localhost", kToken).check({"GET", kEntrance, "localhost", "", ""}),
            Verdict::enter);
}

TEST(NewToken, IsARandomUuid) {
  const std::string token = newToken();
  EXPECT_TRUE(std::regex_match(token, std::regex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}")))
      << token;
  EXPECT_NE(token, newToken());
}

}  // namespace
}  // namespace panel
