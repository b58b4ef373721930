#include "RejectReason.h"

#include <string>

#include "Promise.h"

namespace {

class RejectReasonPromise : public conformance::Promise {};

TEST_F(RejectReasonPromise, WritesTheReasonAsText) {
  promises("Writes the reason for a refusal into `text`, printf-style.");
  std::string text = "old";
  setRejectReason(rejectReasonOutOfRange, text, "%d is not in %d-%d", 15, 0, 14);
  EXPECT_NE(text.find("15 is not in 0-14"), std::string::npos) << text;
  EXPECT_EQ(text.find("old"), std::string::npos) << text;
}

TEST_F(RejectReasonPromise, DoesNotClipTheReason) {
  promises("Writes the reason for a refusal into `text`");
  std::string text;
  const std::string reason(5000, 'x');
  setRejectReason(rejectReasonInvalidValue, text, "%s", reason.c_str());
  EXPECT_NE(text.find(reason), std::string::npos);
}

TEST_F(RejectReasonPromise, AnyThreadMayCall) {
  promises("Thread: any.");
  conformance::onTwoThreads([] {
    std::string text;
    setRejectReason(rejectReasonReadOnly, text, "%d", 12'345);
    EXPECT_NE(text.find("12345"), std::string::npos) << text;
  });
}

}  // namespace
