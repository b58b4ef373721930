#include "ProxyRequest.h"

#include <thread>
#include <vector>

#include "Method.h"
#include "MethodText.h"
#include "RemoteEnd.h"

namespace {

using conformance::eventOf;
using conformance::PlainProxy;

class ProxyRequestPromise : public conformance::RemotePromise {
 protected:
  static bool send(PlainProxy& proxy, int number) {
    Method event = eventOf(number);
    return proxy.request->sendMethod(event);
  }
  std::vector<std::string> received(const Client& client) {
    std::vector<std::string> texts;
    for (const Method& event : platform().events(client.number))
      texts.push_back(conformance::textOf(event));
    return texts;
  }
};

TEST_F(ProxyRequestPromise, SendsToItsPeerOnly) {
  promises("Sends a proxy's messages to its peer.");
  const Client client = connect();
  const Client other = connect();
  PlainProxy* const proxy = observe(client);
  observe(other);
  ASSERT_NE(proxy, nullptr);
  EXPECT_TRUE(send(*proxy, 5));
  EXPECT_EQ(received(client), std::vector<std::string>{"call event number=5"});
  EXPECT_EQ(received(other), std::vector<std::string>{});
}

// The clock holds its observer lock meanwhile.
TEST_F(ProxyRequestPromise, QueuesForAPeerThatDoesNotRead) {
  promises("Queues the message for the peer and returns at once.");
  const Client client = connect();
  PlainProxy* const proxy = observe(client);
  ASSERT_NE(proxy, nullptr);
  std::vector<std::string> expected;
  for (int number = 0; number < 1000; ++number) {
    ASSERT_TRUE(send(*proxy, number)) << number;
    expected.push_back("call event number=" + std::to_string(number));
  }
  EXPECT_EQ(received(client), expected);
}

TEST_F(ProxyRequestPromise, AnyThreadMaySend) {
  promises("Thread: any.");
  const Client client = connect();
  PlainProxy* const proxy = observe(client);
  ASSERT_NE(proxy, nullptr);
  std::thread([&] { EXPECT_TRUE(send(*proxy, 1)); }).join();
  EXPECT_EQ(received(client), std::vector<std::string>{"call event number=1"});
}

// The clock may send until its observer is unregistered.
TEST_F(ProxyRequestPromise, ReportsThatThePeerIsGone) {
  promises("False when the peer is gone.");
  const Client client = connect();
  ASSERT_NE(observe(client), nullptr);
  int sent = 0;
  m_invoker.onUnobserve = [&](PlainProxy* gone) {
    EXPECT_FALSE(send(*gone, 1));
    ++sent;
  };
  platform().disconnect(client.number);
  EXPECT_EQ(sent, 1);
}

}  // namespace
