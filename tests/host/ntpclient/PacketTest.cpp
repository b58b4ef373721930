#include "ntpclient/Packet.h"

#include <gtest/gtest.h>

#include <functional>

#include "host/ntpclient/SntpAnswer.h"

namespace host::ntp {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr std::uint64_t kNonce = 0x1122334455667788;

TEST(Packet, RequestHoldsVersionModeAndNonce) {
  const Packet request = makeRequest(kNonce);
  EXPECT_EQ(request[0], 0x23);
  for (std::size_t i = 1; i < 40; ++i) EXPECT_EQ(request[i], 0) << i;
  EXPECT_EQ(nonceOf(Bytes(request.begin(), request.end())), kNonce);
}

TEST(Packet, GoodAnswerHoldsTheTimeOfItsSending) {
  const Judgement judgement = judge(answerTo(kNonce, kTime), kNonce);
  EXPECT_EQ(judgement.verdict, Verdict::good);
  EXPECT_EQ(judgement.sent, seconds(kTime));
  EXPECT_EQ(judgement.processing, 0ns);
}

TEST(Packet, ExtensionsBehindAnAnswerAreIgnored) {
  Bytes answer = answerTo(kNonce, kTime);
  answer.resize(200, 0xff);
  EXPECT_EQ(judge(answer, kNonce).verdict, Verdict::good);
}

struct Refused {
  Verdict verdict;
  std::function<void(Bytes&)> change;
};

TEST(Packet, AnswersThatBreakARuleAreRefused) {
  const Refused cases[] = {
      {Verdict::tooShort, [](Bytes& p) { p.resize(47); }},
      {Verdict::tooShort, [](Bytes& p) { p.clear(); }},
      {Verdict::wrongMode, [](Bytes& p) { p[0] = 4 << 3 | 3; }},
      {Verdict::wrongMode, [](Bytes& p) { p[0] = 4 << 3 | 5; }},
      {Verdict::wrongMode, [](Bytes& p) { p[0] = 4 << 3; }},
      {Verdict::wrongVersion, [](Bytes& p) { p[0] = 4; }},
      {Verdict::wrongVersion, [](Bytes& p) { p[0] = 3 << 3 | 4; }},
      {Verdict::wrongVersion, [](Bytes& p) { p[0] = 5 << 3 | 4; }},
      {Verdict::wrongOrigin, [](Bytes& p) { p[24] ^= 1; }},
      {Verdict::wrongOrigin, [](Bytes& p) { p[31] ^= 1; }},
      {Verdict::wrongOrigin, [](Bytes& p) { p[1] = 0, p[27] ^= 1; }},
      {Verdict::noStratum, [](Bytes& p) { p[1] = 0; }},
      {Verdict::unsynchronised, [](Bytes& p) { p[0] |= 3 << 6; }},
      {Verdict::wrongStratum, [](Bytes& p) { p[1] = 16; }},
      {Verdict::wrongStratum, [](Bytes& p) { p[1] = 255; }},
      {Verdict::tooFar, [](Bytes& p) { putWord(p, 4, 0x10000); }},
      {Verdict::tooFar, [](Bytes& p) { putWord(p, 4, 0xffffffff); }},
      {Verdict::tooFar, [](Bytes& p) { putWord(p, 8, 0x10000); }},
      {Verdict::noTime, [](Bytes& p) { putWord(p, 40, 0); }},
  };
  for (const Refused& refused : cases) {
    SCOPED_TRACE(textOf(refused.verdict));
    Bytes answer = answerTo(kNonce, kTime);
    refused.change(answer);
    const Judgement judgement = judge(answer, kNonce);
    EXPECT_EQ(judgement.verdict, refused.verdict) << textOf(judgement.verdict);
    EXPECT_EQ(judgement.sent, 0ns);
  }
}

TEST(Packet, AnswersAtTheLimitsAreGood) {
  const std::function<void(Bytes&)> changes[] = {
      [](Bytes& p) { p[0] = 4 << 3 | 4 | 1 << 6; },  // a leap second ahead
      [](Bytes& p) { p[0] = 4 << 3 | 4 | 2 << 6; },
      [](Bytes& p) { p[1] = 1; },
      [](Bytes& p) { p[1] = 15; },
      [](Bytes& p) { putWord(p, 4, 0xffff); },
      [](Bytes& p) { putWord(p, 8, 0xffff); },
      [](Bytes& p) { putWord(p, 4, 0), putWord(p, 8, 0); },
  };
  for (const auto& change : changes) {
    Bytes answer = answerTo(kNonce, kTime);
    change(answer);
    EXPECT_EQ(judge(answer, kNonce).verdict, Verdict::good);
  }
}

TEST(Packet, KissOfDeathCountsOnlyInAnswerToOurRequest) {
  EXPECT_EQ(judge(kissOfDeath(kNonce, "DENY"), kNonce).verdict, Verdict::denied);
  EXPECT_EQ(judge(kissOfDeath(kNonce, "RSTR"), kNonce).verdict, Verdict::denied);
  EXPECT_EQ(judge(kissOfDeath(kNonce, "RATE"), kNonce).verdict, Verdict::rateExceeded);
  EXPECT_EQ(judge(kissOfDeath(kNonce, "INIT"), kNonce).verdict, Verdict::noStratum);
  EXPECT_EQ(judge(kissOfDeath(kNonce, "deny"), kNonce).verdict, Verdict::noStratum);
  EXPECT_EQ(judge(kissOfDeath(kNonce + 1, "DENY"), kNonce).verdict, Verdict::wrongOrigin);
}

struct Instant {
  std::uint32_t since1900;
  std::uint32_t fraction;
  nanoseconds since1970;
};

TEST(Packet, TimestampsRunFrom1968To2104) {
  const Instant instants[] = {
      {k1970, 0, 0s},
      {k1970 + kTime, 0, seconds(kTime)},
      {k1970 + kTime, 0x80000000, seconds(kTime) + 500ms},
      {k1970 + kTime, 0xffffffff, seconds(kTime) + 999'999'999ns},
      {0x80000000, 0, -61505152s},   // 1968-01-20T03:14:08Z
      {0xffffffff, 0, 2085978495s},  // 2036-02-07T06:28:15Z
      {0, 1, 2085978496s},           // and the second after it
      {0x7fffffff, 0, 4233462143s},  // 2104-02-26T09:42:23Z
  };
  for (const Instant& instant : instants) {
    Bytes answer = answerTo(kNonce, kTime);
    putWord(answer, 32, instant.since1900);
    putWord(answer, 40, instant.since1900);
    putWord(answer, 44, instant.fraction);
    const Judgement judgement = judge(answer, kNonce);
    ASSERT_EQ(judgement.verdict, Verdict::good);
    EXPECT_EQ(judgement.sent, instant.since1970) << instant.since1900;
  }
}

TEST(Packet, EachWayTakesHalfOfTheRoundTripWithoutProcessing) {
  Bytes answer = answerTo(kNonce, kTime);
  putWord(answer, 44, 0x40000000);  // sent a quarter of a second after it received
  const Judgement judgement = judge(answer, kNonce);
  EXPECT_EQ(judgement.processing, 250ms);
  EXPECT_EQ(timeAtArrival(judgement, 250ms), seconds(kTime) + 250ms);
  EXPECT_EQ(timeAtArrival(judgement, 350ms), seconds(kTime) + 300ms);
  EXPECT_EQ(timeAtArrival(judgement, 100ms), seconds(kTime) + 250ms) << "a wrong processing time";
}

TEST(Packet, ProcessingTimeIsNeverNegative) {
  Bytes answer = answerTo(kNonce, kTime);
  putWord(answer, 32, k1970 + kTime + 100);
  EXPECT_EQ(judge(answer, kNonce).processing, 0ns);
}

}  // namespace
}  // namespace host::ntp
