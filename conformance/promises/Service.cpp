#include "Service.h"

#include <type_traits>

#include "Promise.h"

class CommsChannelIfc {};

namespace {

static_assert(std::has_virtual_destructor_v<Service>, "the framework deletes through this base");

class PlainService final : public Service {
 public:
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  void run() override {}
};

class ServicePromise : public conformance::Promise {};

TEST_F(ServicePromise, IgnoresMessagesByDefault) {
  promises("A raw message from a communication channel. The default ignores it.");
  const std::unique_ptr<Service> service = std::make_unique<PlainService>();
  CommsChannelIfc channel;
  service->handleMsg("text", 4, "sender", channel, nullptr);
}

TEST_F(ServicePromise, IsAnExecutable) {
  promises("A plug-in's main object, found by other services through Context::getService.");
  PlainService service;
  Executable* const executable = &service;
  EXPECT_EQ(dynamic_cast<Threadable*>(executable), static_cast<Threadable*>(&service));
}

}  // namespace
