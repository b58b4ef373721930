#include "ManagedKeys.h"

#include <cstdlib>

#include "ClientUtils.h"
#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "DSTZoneRules.h"
#include "LocalMgmtIfc.h"
#include "Log.h"
#include "ManageableData.h"
#include "ManagementKeyNames.h"
#include "ManagementRecords.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "Saturate.h"
#include "SemaphoreGuard.h"
#include "SimpleDateText.h"
#include "UniqueNames.h"

namespace {

namespace Key = ManagementKeyNames;
using Parts = const ManagedKeys::Parts&;
using Text = const std::string&;

// The management layer's text for an unknown time.
constexpr const char* kUnknownTime = "???";

bool isBlank(Text value) {
  return value.empty() || value == kUnknownTime;
}

int toNumber(Text text) {
  return saturate<int>(std::strtol(text.c_str(), nullptr, 10));
}

// Notifies the hardware, if present, that the clock changes during a scope.
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

bool setUtc(Parts parts, Text value) {
  int hours = 0, minutes = 0, seconds = 0;
  int day = 0, month = 0, year = 0;
  ClockService& clock = parts.clock;
  if (!clock.getTime(value, hours, minutes, seconds) || !clock.getDate(value, day, month, year))
    return false;
  const ClockChangeNotice notice(clock.physicalIfcSvc());
  return clock.setDate(day, month, year) && clock.setTime(hours, minutes, seconds);
}

std::string simpleTime(Parts parts) {
  int hours = 0, minutes = 0, seconds = 0;
  parts.clock.getTime(hours, minutes, seconds);
  return SimpleDateText::printTime(hours, minutes);
}

// Cut by position: "7:30" is read as hour 7, minute 0.
bool setSimpleTime(Parts parts, Text value) {
  if (isBlank(value)) return false;
  const int hours = SimpleDateText::numberAt(value, 0, 2);
  const int minutes = SimpleDateText::numberAt(value, 3, 2);
  const ClockChangeNotice notice(parts.clock.physicalIfcSvc());
  return parts.clock.setTime(hours, minutes, 0);
}

std::string simpleDate(Parts parts) {
  SimpleDateText::Date date{};
  parts.clock.getDate(date.day, date.month, date.year);
  const auto text = SimpleDateText::print(date, parts.settings.getDateFormat());
  if (!text) CLOCK_LOG(logError, "getData: Invalid Date Format.\n");
  return text.value_or("");
}

// With a date format that has no cutting positions the date is 0.0.0, by design.
bool setSimpleDate(Parts parts, Text value) {
  if (isBlank(value)) return false;
  const SimpleDateText::Date date = SimpleDateText::cut(value, parts.settings.getDateFormat());
  const ClockChangeNotice notice(parts.clock.physicalIfcSvc());
  return parts.clock.setDate(date.day, date.month, date.year);
}

bool setSntpAddress(Parts parts, Text value) {
  const SemaphoreGuard guard(parts.settings.textLock);
  return parts.settings.setSntpAddr(value);
}

std::string ntpSecret(Parts parts) {
  const SemaphoreGuard guard(parts.settings.textLock);
  return parts.settings.getNtpSecret();
}

bool setNtpSecret(Parts parts, Text value) {
  const SemaphoreGuard guard(parts.settings.textLock);
  return parts.settings.setNtpSecret(value);
}

bool setOffset(Parts parts, Text value) {
  std::string rejectReason;  // dropped: the result alone reports a refusal
  return parts.settings.setTimezoneOffset(value, rejectReason);
}

std::string zoneList(Parts parts) {
  std::string list;
  parts.zones.getDSTZoneList(list);
  return list;
}

std::string zoneName(Parts parts) {
  std::string name;
  parts.zones.getDSTZoneName(parts.settings.getDSTZoneID(), name);
  return name;
}

std::string zoneIndex(Parts parts) {
  return ClientUtils::itos(parts.zones.getDSTZoneListIndex(parts.settings.getDSTZoneID()));
}

// The new identifier is reported even when it could not be stored, by design.
bool setZoneByIndex(Parts parts, Text value) {
  const int id = parts.zones.getDSTZoneId(toNumber(value));
  if (id == -1) return false;
  const bool stored = parts.settings.setDSTZoneID(id);
  reportNumber(parts.localMgmt, Key::kDaylightSaveZoneId, id);
  return stored;
}

bool setZoneById(Parts parts, Text value) {
  const int id = toNumber(value);
  return parts.zones.getDSTZoneListIndex(id) != -1 && parts.settings.setDSTZoneID(id);
}

void restartNtpClient(Parts parts) {
  parts.clock.startNTPClient();
}

void refreshZone(Parts parts) {
  parts.clock.startTimeZoneRefresh();
}

// Follows the requested address, refused or not.
void showTimeState(Parts parts, Text server) {
  showWhoSetsTime(parts.localMgmt, server);
}

// clang-format off
constexpr std::array<ManagedKeys::Row, ManagedKeys::kCount> kTable{{
  // key, get, set, what follows a successful set, what follows every set
  {Key::kTime, [](Parts p) { return p.clock.getUTCTime(0); }, setUtc},
  {Key::kSimpleTime, simpleTime, setSimpleTime},
  {Key::kSimpleDate, simpleDate, setSimpleDate},
  {Key::kDateFormat,
   [](Parts p) { return ClientUtils::itos(p.settings.getDateFormat()); },
   [](Parts p, Text value) { return p.settings.setDateFormat(value); }},
  {Key::kTimeFormat,
   [](Parts p) { return ClientUtils::itos(p.settings.getTimeFormat()); },
   [](Parts p, Text value) { return p.settings.setTimeFormat(value); }},
  {Key::kSntpAddr, [](Parts p) { return p.clock.sntpAddress(); }, setSntpAddress, restartNtpClient,
   showTimeState},
  {Key::kNtpSecret, ntpSecret, setNtpSecret, restartNtpClient},
  {Key::kSntpTzOffset,
   [](Parts p) { return p.settings.getTimezoneOffsetStr(); }, setOffset, refreshZone},
  {Key::kDaylightSave,
   [](Parts p) { return ClientUtils::btos(p.settings.getDaylightSavingActive()); },
   [](Parts p, Text value) { return p.settings.setDaylightSavingActive(value); }, refreshZone},
  {Key::kDaylightSaveMinutes,
   [](Parts p) { return ClientUtils::itos(p.settings.getDaylightSavingMinutes()); },
   [](Parts p, Text value) { return p.settings.setDaylightSavingMinutes(value); }, refreshZone},
  {Key::kTimeSource,
   [](Parts p) { return ClientUtils::itos(p.settings.getTimeSource()); },
   [](Parts p, Text value) { return p.settings.setTimeSource(value); }, refreshZone},
  {Key::kDaylightSaveZoneList, zoneList},
  {Key::kDaylightSaveZoneIndex, zoneIndex, setZoneByIndex, refreshZone},
  {Key::kDaylightSaveZoneText, zoneName},
  {Key::kDaylightSaveZoneId,
   [](Parts p) { return ClientUtils::itos(p.settings.getDSTZoneID()); }, setZoneById, refreshZone},
  {Key::kAutoDaylightSave,
   [](Parts p) { return ClientUtils::btos(p.settings.getAutomaticDaylightSavingActive()); },
   [](Parts p, Text value) { return p.settings.setAutomaticDaylightSavingActive(value); }, refreshZone},
}};
// clang-format on
static_assert(kTable.size() == 16 && namesAreUnique(kTable));

// Whether the reset could be reported; nullopt if there is nothing to reset.
std::optional<bool> resetFormat(Parts parts, const char* key, int current, int byDefault) {
  constexpr int kDeviceUser = 0;
  ManageableData query;
  query.addRootId(key, nullptr);
  if (current == byDefault || !parts.localMgmt->isUserData(query, kDeviceUser)) return std::nullopt;
  ManageableData record;
  record.setRootId(key, nullptr);
  record.populate(key, ClientUtils::itos(byDefault));
  parts.clock.setData(record);
  return parts.localMgmt->reportDataChanged(record);
}

}  // namespace

const std::array<ManagedKeys::Row, ManagedKeys::kCount>& ManagedKeys::rows() {
  return kTable;
}

const ManagedKeys::Row* ManagedKeys::find(const std::string& key) {
  for (const Row& row : kTable)
    if (key == row.name) return &row;
  return nullptr;
}

std::optional<std::string> ManagedKeys::get(const std::string& key) const {
  const Row* const row = find(key);
  if (row == nullptr) return std::nullopt;
  return row->get(m_parts);
}

std::optional<bool> ManagedKeys::set(const std::string& key, const std::string& value) const {
  const Row* const row = find(key);
  if (row == nullptr || row->set == nullptr) return std::nullopt;
  const bool accepted = row->set(m_parts, value);
  if (accepted && row->afterSuccess != nullptr) row->afterSuccess(m_parts);
  if (row->always != nullptr) row->always(m_parts, value);
  return accepted;
}

bool ManagedKeys::resetFormats() const {
  if (m_parts.localMgmt == nullptr) return false;
  const ClockServiceDataHandler& settings = m_parts.settings;
  const auto date = resetFormat(m_parts, Key::kDateFormat, settings.getDateFormat(),
                                settings.getDefaultDateFormat());
  const auto time = resetFormat(m_parts, Key::kTimeFormat, settings.getTimeFormat(),
                                settings.getDefaultTimeFormat());
  return time.value_or(date.value_or(false));
}

void ManagedKeys::reloadFormats() const {
  ClockServiceDataHandler& settings = m_parts.settings;
  const int dateFormatBefore = settings.getDateFormat();
  const int timeFormatBefore = settings.getTimeFormat();
  settings.reinitialiseData(true);
  if (settings.getDateFormat() != dateFormatBefore)
    reportNumber(m_parts.localMgmt, Key::kDateFormat, settings.getDateFormat());
  if (settings.getTimeFormat() != timeFormatBefore)
    reportNumber(m_parts.localMgmt, Key::kTimeFormat, settings.getTimeFormat());
}
