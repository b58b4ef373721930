#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "ClockService.h"
#include "plugin/Journal.h"
#include "plugin/JournalObserver.h"
#include "plugin/OrderedTimers.h"
#include "plugin/RecordingServices.h"
#include "plugin/ReportPipe.h"
#include "plugin/StartUpLog.h"
#include "support/LogCapture.h"
#include "support/ZoneGuard.h"

namespace plugin {

// A framework of recording parts; no service yet.
class RecordingFramework : public testing::Test {
 protected:
  RecordingFramework() {
    host::setProcessClock(&clock);
    context.onCall = [this](const std::string& call) { journal.add(call); };
    context.add("PhysicalInterfaceServiceIfc", &physical);
    context.add("LocalMgmtIfc", &management);
    context.add("DataAccessServiceIfc", &store);
  }
  ~RecordingFramework() override {
    end();
    host::setProcessClock(nullptr);
  }
  RecordingFramework(const RecordingFramework&) = delete;
  RecordingFramework& operator=(const RecordingFramework&) = delete;

  void start(Context* with) {
    pipe.renew();
    service->observeTimeEvents(&observer);
    service->initWith(with);
    ASSERT_TRUE(log.waitForPart("NTP Client Thread has been started"));
  }
  void end() {
    pipe.release();
    service.reset();
  }

  Journal journal;
  const StartUpLog startUpLog{journal};
  support::LogCapture log{6};  // sees each line after the journal did
  const support::ZoneGuard zone{"UTC0"};
  host::VirtualClock clock;
  OrderedTimers context{clock, OrderedTimers::Order::ofCreation};
  RecordingPhysical physical{journal, 0};
  RecordingManagement management{journal};
  RecordingStore store{journal};
  JournalObserver observer{journal, "observer"};
  ReportPipe pipe;
  std::unique_ptr<ClockService> service = std::make_unique<ClockService>();
};

}  // namespace plugin
