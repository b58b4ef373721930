#include "remote/Peer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <memory>
#include <new>
#include <vector>

#include "MessageCodec.h"
#include "Method.h"
#include "Proxy.h"
#include "base/Descriptor.h"

namespace host {
namespace {

// A codec without memory: it throws, or its stream fails.
class FailingCodec final : public MessageCodec {
 public:
  explicit FailingCodec(bool throws) : m_throws(throws) {}
  void encode(Method&, std::iostream& stream) override {
    if (m_throws) throw std::bad_alloc();
    stream.setstate(std::ios_base::badbit);
  }
  bool decode(std::iostream&, Method&) override { return false; }

 private:
  const bool m_throws;
};

class PeerWithoutMemory : public ::testing::TestWithParam<bool> {};

// The service that sends the event must neither see an exception nor lose its other observers.
TEST_P(PeerWithoutMemory, FailsWithoutThrowing) {
  FailingCodec codec(GetParam());
  int wakeups = 0;
  const auto peer = std::make_shared<Peer>("client-1", -1, [&wakeups] { ++wakeups; });
  peer->setCodec("failing", codec);
  Method event("event", Method::call);
  EXPECT_FALSE(peer->sendMethod(event));
  EXPECT_EQ(peer->outbox().state(), Outbox::State::failed);
  EXPECT_EQ(peer->outbox().error(), ENOMEM);
  EXPECT_EQ(wakeups, 1);
}

class CountingCodec final : public MessageCodec {
 public:
  void encode(Method& method, std::iostream& stream) override {
    ++encoded;
    stream << method.getName();
    for (const Parameter& parameter : method.getParameters()) stream << parameter.getInt();
  }
  bool decode(std::iostream&, Method&) override { return false; }

  int encoded = 0;
};

Method eventOf(int number) {
  Method event("event", Method::call);
  event.addIntParameter("number", number, Parameter::in);
  return event;
}

TEST(PeerEvents, SameEventToManyIsEncodedOnceForEachCodec) {
  CountingCodec one;
  CountingCodec other;
  std::vector<std::shared_ptr<Peer>> peers;
  for (int i = 0; i < 4; ++i) {
    peers.push_back(std::make_shared<Peer>("client", -1, [] {}));
    peers.back()->setCodec(i < 2 ? "one" : "other", i < 2 ? one : other);
  }
  for (const int number : {1, 2, 1}) {
    for (const auto& peer : peers) {
      Method event = eventOf(number);
      static_cast<void>(peer->sendMethod(event));
    }
  }
  EXPECT_EQ(one.encoded, 3);
  EXPECT_EQ(other.encoded, 3);
}

INSTANTIATE_TEST_SUITE_P(ThrowsOrNot, PeerWithoutMemory, ::testing::Bool());

}  // namespace
}  // namespace host
