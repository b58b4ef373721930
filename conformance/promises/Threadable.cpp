#include "Threadable.h"

#include "Promise.h"

namespace {

class PlainBody final : public Threadable {
 public:
  void run() override {}
};

class ThreadablePromise : public conformance::Promise {};

TEST_F(ThreadablePromise, HasTheCreatorsPriorityByDefault) {
  promises("The wanted scheduling priority; the default is 0, that of the creator.");
  EXPECT_EQ(PlainBody().getThreadPriorityForPlatform(), 0);
}

TEST_F(ThreadablePromise, NamesItsKindForDiagnostics) {
  promises("The kind of thread, for diagnostics; the default is \"Threadable\".");
  EXPECT_EQ(PlainBody().type(), "Threadable");
}

}  // namespace
