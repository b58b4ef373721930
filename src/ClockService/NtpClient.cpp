#include <unistd.h>

#include <array>
#include <cstdlib>

#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "Context.h"
#include "LocalMgmtIfc.h"
#include "Log.h"
#include "ManageableData.h"
#include "ManagedKeys.h"
#include "ManagementKeyNames.h"
#include "ManagementRecords.h"
#include "NetHelper.h"
#include "NtpCommandLine.h"
#include "NtpRestart.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "Process.h"
#include "SemaphoreGuard.h"
#include "SntpServer.h"

namespace {

constexpr int kAddressTextSize = 46;  // the longest IPv6 text and its terminator

void writeToSystemLog(const NtpCommandLine& line) {
  syslogger_notice("startNTPClient() => \" %s %s %s %s %s %s %s %s %s %s %s %s %s\"\n",
                   line.textAt(0), line.textAt(1), line.textAt(2), line.textAt(3), line.textAt(4),
                   line.textAt(5), line.textAt(6), line.textAt(7), line.textAt(8), line.textAt(9),
                   line.textAt(10), line.textAt(11), line.textAt(12));
}

}  // namespace

bool ClockService::isTimeSourceSntp() {
  const bool received = m_sntpTimeReceived;
  CLOCK_LOG(logTrace, "isTimeSourceSntp: return %d", static_cast<int>(received));
  return received;
}

void ClockService::startNTPClient() {
  CLOCK_LOG(logInformation, "start NTP client");
  if (!m_networkUp) {
    CLOCK_LOG(logInformation, "Network not up");
    return;
  }
  const std::string server = sntpAddress();
  if (!isConfiguredServer(server)) {
    CLOCK_LOG(logInformation, "No NTP server configure");
    return;
  }
  m_ntpClientRequested = false;
  const bool traced = TraceProfile::GetLevel("ClockService") == logTrace;
  std::array<char, kAddressTextSize> address{};
  constexpr int kAnyFamily = 0;
  if (!NetHelper::dnsLookup(server.c_str(), address.data(), kAddressTextSize, kAnyFamily)) return;
  const NtpCommandLine line(address.data(), NetHelper::verifyIpAddress(address.data(), false),
                            traced);
  writeToSystemLog(line);
  replaceNtpClient(const_cast<char* const*>(line.arguments().data()));
}

// One lock covers the end of the old client and the start of the new one.
void ClockService::replaceNtpClient(char* const* commandLine) {
  const SemaphoreGuard guard(m_ntpProcessLock);
  m_ntpClientProcess.reset();
  {
    const SemaphoreGuard environment(m_environmentLock);
    m_ntpClientProcess =
        std::make_unique<Process>(Process::ownProcessGroup, commandLine, environ, nullptr);
  }
  if (m_ntpClientProcess->launch() <= 0) CLOCK_LOG(logError, "ntpclient couldn't be started");
}

void ClockService::setRestartNTPClientTimer() {
  seedRandomGenerator();
  dropTimer(m_restartNtpClientTimer);
  const int seconds = NtpRestart::extraSeconds(std::rand());
  CLOCK_LOG(logInformation, "rand delay 600 + %d where rand_max is %d", seconds, RAND_MAX);
  startNewTimer(m_restartNtpClientTimer, NtpRestart::delay(seconds));
}

// Once for each service. Devices have different MAC addresses, and therefore different delays.
void ClockService::seedRandomGenerator() {
  if (m_localMgmt == nullptr || m_randomSeeded != 0) return;
  m_randomSeeded = 1;
  const auto mac = readManagementValue(*m_localMgmt, ManagementKeyNames::kMacAddr);
  if (!mac) return;
  CLOCK_LOG(logInformation, "mac address is %s", mac->c_str());
  const int seed = convertLastDigitsOfMacAddressToInt(mac->c_str());
  CLOCK_LOG(logInformation, "seeding with %d", seed);
  std::srand(static_cast<unsigned int>(seed));
}

int ClockService::convertLastDigitsOfMacAddressToInt(const char* text) {
  int seed = 0;
  switch (NtpRestart::seedOf(text, seed)) {
    case NtpRestart::MacText::wrongLength:
      CLOCK_LOG(logError, "invalid mac length");
      break;
    case NtpRestart::MacText::unexpectedCharacter:
      CLOCK_LOG(logError, "unexpected character");
      break;
    case NtpRestart::MacText::valid:
      break;
  }
  return seed;
}

// The value is not used: the client has already set the clock.
void ClockService::handleSNTPClientUpdate(long /*secondsSinceEpoch*/) {
  sntpTimeChanged();
}

void ClockService::sntpTimeChanged() {
  CLOCK_LOG(logInformation, "sntpTimeChanged: handling SNTP client update");
  if (m_sntpTimeReceived.exchange(true)) {
    notifyTimeChangeEvent();
  } else {
    announceFirstNtpTime();
  }
  notifyDateChangeEvent();
  if (!m_updateFallbackOnSntp) return;
  stopTimer(m_fallbackTimeUpdateTimer);
  startTimer(m_fallbackTimeUpdateTimer);
  const std::string fallbackTime = setFallbackTime();
  CLOCK_LOG(logInformation, "sntpTimeChanged: FallbackTime is \"%s\"", fallbackTime.c_str());
}

void ClockService::announceFirstNtpTime() {
  PhysicalInterfaceServiceIfc* const physicalIfc = m_physicalIfc;
  if (physicalIfc != nullptr) physicalIfc->beginClockChange();
  notifyTimeChangeEvent();
  if (physicalIfc != nullptr) physicalIfc->endClockChange();
}

void ClockService::jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status) {
  CLOCK_LOG(logInformation, "jackEvent plugID %d , plugStatus %d", static_cast<int>(plug),
            static_cast<int>(status));
  if (plug == PhysDefs::plugNetwork && status == PhysDefs::plugInserted) startNTPClient();
}

void ClockService::manageableDataChanged(ManageableData& record) {
  const SemaphoreGuard guard(m_mgmtLock);
  const std::string key = record.getRootId();
  std::string value;
  record.interogate(key, value);
  CLOCK_LOG(logInformation, "manageableDataChanged=\"%s\"", key.c_str());
  if (key == ManagementKeyNames::kMobilityUserDataUpdate) {
    const auto keys = managedKeys();
    if (keys && (value == "all" || value == "unmanaged")) keys->reloadFormats();
  } else if (key == ManagementKeyNames::kInterfaceStatus) {
    networkChanged(value);
  } else if (key == ManagementKeyNames::kDhcpEnabled) {
    startTimeZoneRefresh();
    startNTPClient();
  }
}

// When the network goes down, a running client keeps running.
void ClockService::networkChanged(const std::string& status) {
  m_networkUp = status == "up";
  if (m_networkUp) startNTPClient();
}
