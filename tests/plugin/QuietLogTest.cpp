// With logging off, even errors are checked against the level before their text is built.

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

#include "ClockServiceInvoker.h"
#include "DevicePaths.h"
#include "framework/ProgramMap.h"
#include "support/Framework.h"
#include "support/LogCapture.h"
#include "support/RecordingServices.h"
#include "support/Telephone.h"

namespace {

std::atomic<int> g_written{0};  // by the plug-in, whatever the level

}  // namespace

// The linker replaces logAppUni, whose mangled name this is.
// NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl50-cpp)
extern "C" void __wrap__Z9logAppUniPKciS0_iS0_z(const char* component, int level, const char* file,
                                                int line, const char* format, ...);

extern "C" void __wrap__Z9logAppUniPKciS0_iS0_z(const char* component, int /*level*/,
                                                const char* /*file*/, int /*line*/,
                                                const char* /*format*/, ...) {
  if (std::strncmp(component, "ClockService", 12) == 0) ++g_written;
}
// NOLINTEND(bugprone-reserved-identifier, cert-dcl50-cpp)

namespace {

class ClockWithoutALog : public testing::Test {
 protected:
  ClockWithoutALog() { g_written = 0; }
  ~ClockWithoutALog() override {
    telephone.switchOff();
    EXPECT_EQ(g_written, 0);
  }
  ClockWithoutALog(const ClockWithoutALog&) = delete;
  ClockWithoutALog& operator=(const ClockWithoutALog&) = delete;

  support::Telephone telephone;
  const support::LogCapture log{1};
};

TEST(ClockWithALog, WritesToIt) {
  g_written = 0;
  const support::LogCapture log(5);
  support::Telephone telephone;
  telephone.switchOn();
  EXPECT_GT(g_written, 0);
}

TEST_F(ClockWithoutALog, HasNoContext) {
  ClockService service;
  service.initWith(nullptr);
  telephone.pipe.release();
}

TEST_F(ClockWithoutALog, MissesThePhysicalInterface) {
  telephone.context.add("PhysicalInterfaceServiceIfc", nullptr);
  telephone.switchOn();
}

TEST_F(ClockWithoutALog, HasAnInvalidSavedTime) {
  telephone.store("FallbackDateTime", "yesterday");
  telephone.switchOn();
}

TEST_F(ClockWithoutALog, CannotRecordItsStart) {
  support::Journal journal;
  support::RecordingManagement management(journal);
  management.acceptSets = false;
  telephone.context.add("LocalMgmtIfc", &management);
  telephone.switchOn();
}

TEST_F(ClockWithoutALog, CannotSetTheSystemsTime) {
  telephone.switchOn();
  telephone.service().setTime(-1);
  EXPECT_EQ(telephone.wallText(), "2016-06-16T00:00:00");
}

TEST_F(ClockWithoutALog, HasAnUnknownDateFormat) {
  telephone.switchOn();
  EXPECT_TRUE(telephone.manage("date-format", "7"));
  EXPECT_EQ(telephone.managed("simple-date"), "");
}

TEST_F(ClockWithoutALog, CannotStartTheClient) {
  host::ProgramMap::instance().set(DevicePaths::kNtpClientProgram, "no/such/program");
  telephone.management.setValue("interface-status", "up");
  telephone.store("SNTPaddress", "127.0.0.1");
  telephone.switchOn();
  EXPECT_TRUE(log.hasPart("startNTPClient() =>"));  // the system log's
}

TEST_F(ClockWithoutALog, HasAnInvalidMacAddress) {
  for (const char* const mac : {"short", "0001E3A1B2CG"}) {
    telephone.management.setValue("mac-addr", mac);
    telephone.switchOn();
    telephone.pass(std::chrono::hours{1});
    telephone.switchOff();
  }
}

TEST_F(ClockWithoutALog, GetsInvalidRequests) {
  support::Framework framework;
  ClockServiceInvoker invoker;
  telephone.switchOn();
  const auto send = [&](Executable* service, const char* message) {
    EXPECT_TRUE(support::request(invoker, service, message).replies.empty()) << message;
  };
  send(&telephone.service(), "call getTime\n");  // before its initialisation
  invoker.initInvoker(&framework);
  send(nullptr, "call getTime\n");
  send(&telephone.service(), "getTime\n");
  send(&telephone.service(), "call nothing\n");
}

}  // namespace
