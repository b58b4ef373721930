// The default behaviour of the platform's base classes.
#include <gtest/gtest.h>

#include <type_traits>

#include "Executable.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "Proxy.h"
#include "Service.h"

namespace {

// The framework deletes objects through these bases.
static_assert(std::has_virtual_destructor_v<Executable>);
static_assert(std::has_virtual_destructor_v<Service>);
static_assert(std::has_virtual_destructor_v<Proxy>);
static_assert(std::has_virtual_destructor_v<Invoker>);
static_assert(std::has_virtual_destructor_v<InvokerResponse>);

class PlainService final : public Service {
 public:
  void init(Context& /*context*/) override {}
  void shutdown() override {}
  void run() override {}
};

TEST(Service, IgnoresExpiriesAndHasThreadPriorityZeroByDefault) {
  PlainService service;
  service.timerEvent(1);
  EXPECT_EQ(service.getThreadPriorityForPlatform(), 0);
  EXPECT_EQ(service.type(), "Threadable");
}

}  // namespace
