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

// Writes nothing, for want of memory: it throws, or its stream does and keeps that to itself.
class StarvedCodec final : public MessageCodec {
 public:
  explicit StarvedCodec(bool throws) : m_throws(throws) {}
  void encode(Method&, std::iostream& stream) override {
    if (m_throws) throw std::bad_alloc();
    stream.setstate(std::ios_base::badbit);
  }
  bool decode(std::iostream&, Method&) override { return false; }

 private:
  const bool m_throws;
};

class StarvedPeer : public ::testing::TestWithParam<bool> {};

// The service that raises the event must neither see an exception nor lose its other observers.
TEST_P(StarvedPeer, IsGivenUpWithoutAWordToTheService) {
  StarvedCodec codec(GetParam());
  int attention = 0;
  const auto peer = std::make_shared<Peer>("client-1", -1, [&attention] { ++attention; });
  peer->setCodec("starved", codec);
  Method event("event", Method::call);
  EXPECT_FALSE(peer->sendMethod(event));
  EXPECT_EQ(peer->outbox().state(), Outbox::State::failed);
  EXPECT_EQ(peer->outbox().error(), ENOMEM);
  EXPECT_EQ(attention, 1);
}

INSTANTIATE_TEST_SUITE_P(InEitherWay, StarvedPeer, ::testing::Bool());

}  // namespace
}  // namespace host
