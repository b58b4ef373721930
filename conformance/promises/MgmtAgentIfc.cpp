#include "MgmtAgentIfc.h"

#include <thread>
#include <vector>

#include "LocalMgmtIfc.h"
#include "Promise.h"
#include "RecordingAgent.h"

namespace {

class MgmtAgentIfcPromise : public conformance::Promise {};

TEST_F(MgmtAgentIfcPromise, IsCalledOnOneThread) {
  promises("Thread: the management thread.");
  LocalMgmtIfc& management = service<LocalMgmtIfc>("LocalMgmtIfc");
  conformance::RecordingAgent agent;
  EXPECT_TRUE(management.registerAgent("ClockMgmtId", &agent));
  EXPECT_TRUE(management.observeData("dhcp-enabled", &agent));
  EXPECT_TRUE(platform().manage("date-format", "1"));
  std::thread([&] {
    ManageableData record = conformance::recordOf("dhcp-enabled", "true");
    EXPECT_TRUE(management.setData(record));
  }).join();
  platform().settle();
  EXPECT_TRUE(platform().resetUserData());
  const auto threads = agent.threads();
  platform().dropService();
  ASSERT_EQ(threads.size(), 3U);
  EXPECT_EQ(threads, std::vector<std::thread::id>(3, threads[0]));
}

}  // namespace
