#include "Executable.h"

#include <type_traits>

#include "Promise.h"

namespace {

static_assert(std::has_virtual_destructor_v<Executable>, "the framework deletes through this base");

class PlainPart final : public Executable {
 public:
  void init(Context& /*context*/) override {}
  void shutdown() override {}
};

class ExecutablePromise : public conformance::Promise {};

TEST_F(ExecutablePromise, IgnoresExpiriesByDefault) {
  promises("A timer created for this object has expired. The default ignores it.");
  const std::unique_ptr<Executable> part = std::make_unique<PlainPart>();
  part->timerEvent(1);
}

}  // namespace
