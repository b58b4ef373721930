#include "remote/Peer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <memory>
#include <new>

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

INSTANTIATE_TEST_SUITE_P(ThrowsOrNot, PeerWithoutMemory, ::testing::Bool());

}  // namespace
}  // namespace host
