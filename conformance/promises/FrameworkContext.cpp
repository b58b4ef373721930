#include "FrameworkContext.h"

#include <string>

#include "Method.h"
#include "RemoteEnd.h"

namespace {

using conformance::PlainProxy;

class FrameworkContextPromise : public conformance::RemotePromise {
 protected:
  FrameworkContext& remote() { return platform().remote(); }
};

TEST_F(FrameworkContextPromise, KnowsItsCodecs) {
  promises("The codec kept under `name`, or null.");
  EXPECT_FALSE(platform().codecs().empty());
  for (const std::string& name : platform().codecs()) {
    EXPECT_NE(remote().getCodec(name), nullptr) << name;
    EXPECT_EQ(remote().getCodec(name), remote().getCodec(name)) << name;
  }
  for (const char* const name : {"", "no such codec"})
    EXPECT_EQ(remote().getCodec(name), nullptr) << name;
}

// So that "unobserveTimeEvents" removes what "observeTimeEvents" has added.
TEST_F(FrameworkContextPromise, HasOneProxyForAPeer) {
  promises("the same one each time for the same pair, while the peer is connected.");
  const Client client = connect();
  PlainProxy* const proxy = observe(client);
  ASSERT_NE(proxy, nullptr);
  EXPECT_EQ(observe(client), proxy);
  const Client other = connect();
  EXPECT_NE(other.address, client.address);
  PlainProxy* const others = observe(other);
  EXPECT_NE(others, nullptr);
  EXPECT_NE(others, proxy);
}

TEST_F(FrameworkContextPromise, HasNoOtherProxies) {
  promises("Null for an unknown interface or peer.");
  const Client client = connect();
  EXPECT_EQ(remote().createProxy("NoSuchIfc", client.address), nullptr);
  EXPECT_EQ(remote().createProxy(kInterface, "nobody"), nullptr);
  EXPECT_EQ(remote().createProxy(kInterface, ""), nullptr);
}

TEST_F(FrameworkContextPromise, UnregistersAPeerThatHasDisconnected) {
  promises("which unregisters a peer's observers before it frees the proxy.");
  const Client client = connect();
  const Client other = connect();
  observe(client);
  PlainProxy* const others = observe(other);
  observe(client);  // registered twice
  ASSERT_EQ(PlainProxy::living, 2);
  platform().disconnect(client.number);
  EXPECT_EQ(m_invoker.observers, std::vector<PlainProxy*>{others});
  EXPECT_EQ(PlainProxy::living, 1);
}

TEST_F(FrameworkContextPromise, AnyThreadMayCall) {
  promises("outlives every invoker. Thread: any.");
  FrameworkContext& shared = remote();
  const std::string name = platform().codecs().at(0);
  conformance::onTwoThreads([&] { EXPECT_NE(shared.getCodec(name), nullptr); });
}

}  // namespace
