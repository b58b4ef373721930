#include "Proxy.h"

#include <type_traits>

#include "Context.h"
#include "Method.h"
#include "RemoteEnd.h"

namespace {

static_assert(std::has_virtual_destructor_v<Proxy>, "the framework deletes through this base");

class ProxyBasePromise : public conformance::Promise {};

TEST_F(ProxyBasePromise, HasNothingToStartOrStop) {
  promises("does nothing");
  conformance::PlainProxy own;
  Proxy& proxy = own;
  proxy.init(platform().context());
  proxy.timerEvent(1);
  proxy.shutdown();
}

class ProxyPromise : public conformance::RemotePromise {};

TEST_F(ProxyPromise, IsBoundBeforeItsFirstUse) {
  promises("Binds the proxy to its peer, once, before its first use.");
  const Client client = connect();
  conformance::PlainProxy* const proxy = observe(client);
  ASSERT_NE(proxy, nullptr);
  EXPECT_NE(proxy->request, nullptr);
}

}  // namespace
