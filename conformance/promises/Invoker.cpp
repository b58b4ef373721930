#include "Invoker.h"

#include <type_traits>

#include "InvokerResponse.h"
#include "Method.h"
#include "RemoteEnd.h"

namespace {

static_assert(std::has_virtual_destructor_v<Invoker>, "the framework deletes through this base");

class PlainInvoker final : public Invoker {
 public:
  void handleMessage(Executable* /*service*/, const char* /*message*/, int /*length*/,
                     InvokerResponse* response) override {
    delete response;
  }
};

class InvokerBasePromise : public conformance::Promise {};

TEST_F(InvokerBasePromise, IgnoresTheContextByDefault) {
  promises("The default ignores the context.");
  const std::unique_ptr<Invoker> invoker = std::make_unique<PlainInvoker>();
  invoker->initInvoker(nullptr);
}

class InvokerPromise : public conformance::RemotePromise {};

TEST_F(InvokerPromise, GetsEachRequestForTheService) {
  promises("Handles one request of `length` bytes for `executable`.");
  const Client client = connect();
  m_invoker.requests.clear();
  Method call("setTime", Method::call);
  call.addIntParameter("setTimeHours", 7, Parameter::in);
  EXPECT_NE(replyTo(client, call), "none");
  ASSERT_EQ(m_invoker.requests.size(), 1U);
  EXPECT_EQ(m_invoker.requests[0].service, &m_service);
  EXPECT_EQ(m_invoker.requests[0].text, "call setTime setTimeHours=7");
}

}  // namespace
