#include <cstdlib>
#include <ctime>

#include "ClientUtils.h"
#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "Context.h"
#include "DSTZoneRules.h"
#include "LocalMgmtIfc.h"
#include "Log.h"
#include "ManageableData.h"
#include "ManagementKey.h"
#include "ManagementKeyNames.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "Saturate.h"
#include "SecurityLogServiceIfc.h"
#include "SemaphoreGuard.h"
#include "SimpleDateText.h"
#include "SntpServer.h"

namespace {

// What the management layer shows for a time that it does not know.
constexpr const char* unknownTime = "???";

bool isBlank(const std::string& value) {
  return value.empty() || value == unknownTime;
}

int toNumber(const std::string& text) {
  return saturate<int>(std::strtol(text.c_str(), nullptr, 10));
}

// Tells the hardware, if it is there, that the clock changes during a scope.
class ClockChangeNotice {
 public:
  explicit ClockChangeNotice(PhysicalInterfaceServiceIfc* physicalIfc)
      : m_physicalIfc(physicalIfc) {
    if (m_physicalIfc != nullptr) m_physicalIfc->beginClockChange();
  }
  ~ClockChangeNotice() {
    if (m_physicalIfc != nullptr) m_physicalIfc->endClockChange();
  }
  ClockChangeNotice(const ClockChangeNotice&) = delete;
  ClockChangeNotice& operator=(const ClockChangeNotice&) = delete;

 private:
  PhysicalInterfaceServiceIfc* m_physicalIfc;
};

}  // namespace

bool ClockService::getData(ManageableData& record) {
  const SemaphoreGuard guard(m_mgmtLock);
  const std::string key = record.getRootId();
  CLOCK_LOG(logInformation, "getData %s", key.c_str());
  const ManagementKey* const entry = m_dataHandler != nullptr ? ManagementKey::find(key) : nullptr;
  std::string value;
  if (entry != nullptr) {
    value = entry->get(*this);
    record.populate(key, value);
  } else {
    CLOCK_LOG(logInformation, "Option %s is not supported. May be write only or non-existant.",
              key.c_str());
  }
  CLOCK_LOG(logInformation, "getData: %s : %s", key.c_str(), value.c_str());
  return entry != nullptr;
}

bool ClockService::setData(ManageableData& record) {
  std::string key;
  std::string value;
  bool accepted = false;
  {
    const SemaphoreGuard guard(m_mgmtLock);
    key = record.getRootId();
    record.interogate(key, value);
    CLOCK_LOG(logInformation, "setData: \"%s\": \"%s\"", key.c_str(), value.c_str());
    accepted = applyManagementValue(key, value);
  }
  logManagementSet(key, value, accepted);
  return accepted;
}

// A text that is too short for its key throws std::out_of_range through here; the lock is a
// guard's.
bool ClockService::applyManagementValue(const std::string& key, const std::string& value) {
  const ManagementKey* const entry = m_dataHandler != nullptr ? ManagementKey::find(key) : nullptr;
  if (entry == nullptr || entry->set == nullptr) {
    CLOCK_LOG(logInformation, "Option %s cannot be set. May be read only or non-existant.",
              key.c_str());
    return false;
  }
  const bool accepted = entry->set(*this, value);
  if (accepted && entry->afterSuccess != nullptr) entry->afterSuccess(*this);
  if (entry->always != nullptr) entry->always(*this, value);
  return accepted;
}

// Every attempt is recorded, refused ones and unknown keys too. The service may appear later than
// the clock, so it is looked for until it is there.
void ClockService::logManagementSet(const std::string& key, const std::string& value,
                                    bool accepted) {
  if (m_securityLog == nullptr && m_context != nullptr)
    m_securityLog =
        dynamic_cast<SecurityLogServiceIfc*>(m_context->getService("SecurityLogServiceIfc"));
  SecurityLogServiceIfc* const securityLog = m_securityLog;
  if (securityLog == nullptr) return;
  const std::string text = "ClockSettings set data " + key + "(" + value + ")";
  securityLog->record(time(nullptr), 4, 1, 5, 3, !accepted, text, "", "");
}

// 0: settable by hand. 4: set by the time server. Follows the requested address, refused or not.
void ClockService::showWhoSetsTime(const std::string& server) {
  constexpr int settable = 0;
  constexpr int setByDevice = 4;
  if (m_localMgmt == nullptr) return;
  ManageableData record;
  record.addRootId(ManagementKeyNames::time, nullptr);
  m_localMgmt->setItemState(record, isConfiguredServer(server) ? setByDevice : settable);
}

std::string ClockService::simpleTime() {
  int hours = 0, minutes = 0, seconds = 0;
  getTime(hours, minutes, seconds);
  return SimpleDateText::printTime(hours, minutes);
}

std::string ClockService::simpleDate() {
  SimpleDateText::Date date{};
  getDate(date.day, date.month, date.year);
  const auto text = SimpleDateText::print(date, dateFormat());
  if (!text) CLOCK_LOG(logError, "getData: Invalid Date Format.\n");
  return text.value_or("");
}

std::string ClockService::zoneList() {
  std::string list;
  m_dstZoneRules->getDSTZoneList(list);
  return list;
}

std::string ClockService::zoneName() {
  std::string name;
  m_dstZoneRules->getDSTZoneName(m_dataHandler->getDSTZoneID(), name);
  return name;
}

bool ClockService::setCurrentUtc(const std::string& value) {
  int hours = 0, minutes = 0, seconds = 0;
  int day = 0, month = 0, year = 0;
  if (!getTime(value, hours, minutes, seconds) || !getDate(value, day, month, year)) return false;
  physicalIfcSvc();
  const ClockChangeNotice notice(m_physicalIfc);
  return setDate(day, month, year) && setTime(hours, minutes, seconds);
}

// Cut by position: "7:30" is read as hour 7, minute 0.
bool ClockService::setSimpleTime(const std::string& value) {
  if (isBlank(value)) return false;
  const int hours = SimpleDateText::numberAt(value, 0, 2);
  const int minutes = SimpleDateText::numberAt(value, 3, 2);
  physicalIfcSvc();
  const ClockChangeNotice notice(m_physicalIfc);
  return setTime(hours, minutes, 0);
}

// With a date format that has no cutting positions the date is 0.0.0, by design.
bool ClockService::setSimpleDate(const std::string& value) {
  if (isBlank(value)) return false;
  const SimpleDateText::Date date = SimpleDateText::cut(value, dateFormat());
  physicalIfcSvc();
  const ClockChangeNotice notice(m_physicalIfc);
  return setDate(date.day, date.month, date.year);
}

bool ClockService::setSntpServer(const std::string& value) {
  const SemaphoreGuard guard(m_dataHandler->textLock);
  return m_dataHandler->setSntpAddr(value);
}

bool ClockService::setOffset(const std::string& value) {
  std::string rejectReason;  // not passed on: a refusal is told by the result alone
  return m_dataHandler->setTimezoneOffset(value, rejectReason);
}

// The new identifier is reported even when it could not be stored, by design.
bool ClockService::setZoneByIndex(const std::string& value) {
  const int id = m_dstZoneRules->getDSTZoneId(toNumber(value));
  if (id == -1) return false;
  const bool stored = m_dataHandler->setDSTZoneID(id);
  reportNumber(ManagementKeyNames::daylightSaveZoneId, id);
  return stored;
}

bool ClockService::setZoneById(const std::string& value) {
  const int id = toNumber(value);
  return m_dstZoneRules->getDSTZoneListIndex(id) != -1 && m_dataHandler->setDSTZoneID(id);
}

bool ClockService::resetUserData() {
  if (m_dataHandler == nullptr || m_localMgmt == nullptr) return false;
  bool done = false;
  resetFormat(ManagementKeyNames::dateFormat, m_dataHandler->getDateFormat(),
              m_dataHandler->getDefaultDateFormat(), done);
  resetFormat(ManagementKeyNames::timeFormat, m_dataHandler->getTimeFormat(),
              m_dataHandler->getDefaultTimeFormat(), done);
  return done;
}

// Leaves `done` alone when there is nothing to do, so that of two formats the later one that was
// reset decides, by design.
void ClockService::resetFormat(const char* key, int current, int byDefault, bool& done) {
  constexpr int deviceUser = 0;
  ManageableData query;
  query.addRootId(key, nullptr);
  if (current == byDefault || !m_localMgmt->isUserData(query, deviceUser)) return;
  ManageableData record;
  record.setRootId(key, nullptr);
  record.populate(key, ClientUtils::itos(byDefault));
  setData(record);
  done = m_localMgmt->reportDataChanged(record);
}
