#include "ManagementKey.h"

#include <string_view>

#include "ClientUtils.h"
#include "ClockService.h"
#include "ClockServiceDataHandler.h"
#include "DSTZoneRules.h"
#include "ManagementKeyNames.h"
#include "SemaphoreGuard.h"

namespace {

using Text = const std::string&;
namespace Key = ManagementKeyNames;

constexpr std::array<const char*, ManagementKey::count> names{Key::time,
                                                              Key::simpleTime,
                                                              Key::simpleDate,
                                                              Key::dateFormat,
                                                              Key::timeFormat,
                                                              Key::sntpAddr,
                                                              Key::ntpSecret,
                                                              Key::sntpTzOffset,
                                                              Key::daylightSave,
                                                              Key::daylightSaveMinutes,
                                                              Key::timeSource,
                                                              Key::daylightSaveZoneList,
                                                              Key::daylightSaveZoneIndex,
                                                              Key::daylightSaveZoneText,
                                                              Key::daylightSaveZoneId,
                                                              Key::autoDaylightSave};

constexpr bool namesAreUnique() {
  for (std::size_t i = 0; i < names.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      if (std::string_view(names[i]) == names[j]) return false;
  return true;
}
static_assert(names.size() == 16 && namesAreUnique());

std::string ntpSecret(const ClockServiceDataHandler& settings) {
  const SemaphoreGuard texts(settings.textLock);
  return settings.getNtpSecret();
}

bool setNtpSecret(ClockServiceDataHandler& settings, const std::string& value) {
  const SemaphoreGuard texts(settings.textLock);
  return settings.setNtpSecret(value);
}

}  // namespace

void ManagementKey::restartNtpClient(ClockService& clock) {
  clock.startNTPClient();
}

void ManagementKey::refreshZone(ClockService& clock) {
  clock.startTimer(clock.m_timeZoneRefreshTimer);
}

// clang-format off
// NOLINTNEXTLINE(readability-function-size): sixteen rows on one screen
const std::array<ManagementKey, ManagementKey::count>& ManagementKey::table() {
  using Clock = ClockService&;
  static const std::array<ManagementKey, count> rows{{
    // key, get, set, what follows a successful set, what follows every set
    {Key::time,
     [](Clock c) { return c.getUTCTime(0); },
     [](Clock c, Text value) { return c.setCurrentUtc(value); }, nullptr, nullptr},
    {Key::simpleTime,
     [](Clock c) { return c.simpleTime(); },
     [](Clock c, Text value) { return c.setSimpleTime(value); }, nullptr, nullptr},
    {Key::simpleDate,
     [](Clock c) { return c.simpleDate(); },
     [](Clock c, Text value) { return c.setSimpleDate(value); }, nullptr, nullptr},
    {Key::dateFormat,
     [](Clock c) { return ClientUtils::itos(c.m_dataHandler->getDateFormat()); },
     [](Clock c, Text value) { return c.m_dataHandler->setDateFormat(value); }, nullptr, nullptr},
    {Key::timeFormat,
     [](Clock c) { return ClientUtils::itos(c.m_dataHandler->getTimeFormat()); },
     [](Clock c, Text value) { return c.m_dataHandler->setTimeFormat(value); }, nullptr, nullptr},
    {Key::sntpAddr,
     [](Clock c) { return c.sntpAddress(); },
     [](Clock c, Text value) { return c.setSntpServer(value); }, restartNtpClient,
     [](Clock c, Text value) { c.showWhoSetsTime(value); }},
    {Key::ntpSecret,
     [](Clock c) { return ntpSecret(*c.m_dataHandler); },
     [](Clock c, Text value) { return setNtpSecret(*c.m_dataHandler, value); }, restartNtpClient, nullptr},
    {Key::sntpTzOffset,
     [](Clock c) { return c.m_dataHandler->getTimezoneOffsetStr(); },
     [](Clock c, Text value) { return c.setOffset(value); }, refreshZone, nullptr},
    {Key::daylightSave,
     [](Clock c) { return ClientUtils::btos(c.m_dataHandler->getDaylightSavingActive()); },
     [](Clock c, Text value) { return c.m_dataHandler->setDaylightSavingActive(value); }, refreshZone, nullptr},
    {Key::daylightSaveMinutes,
     [](Clock c) { return ClientUtils::itos(c.m_dataHandler->getDaylightSavingMinutes()); },
     [](Clock c, Text value) { return c.m_dataHandler->setDaylightSavingMinutes(value); }, refreshZone, nullptr},
    {Key::timeSource,
     [](Clock c) { return ClientUtils::itos(c.m_dataHandler->getTimeSource()); },
     [](Clock c, Text value) { return c.m_dataHandler->setTimeSource(value); }, refreshZone, nullptr},
    {Key::daylightSaveZoneList,
     [](Clock c) { return c.zoneList(); }, nullptr, nullptr, nullptr},
    {Key::daylightSaveZoneIndex,
     [](Clock c) { return ClientUtils::itos(c.m_dstZoneRules->getDSTZoneListIndex(c.m_dataHandler->getDSTZoneID())); },
     [](Clock c, Text value) { return c.setZoneByIndex(value); }, refreshZone, nullptr},
    {Key::daylightSaveZoneText,
     [](Clock c) { return c.zoneName(); }, nullptr, nullptr, nullptr},
    {Key::daylightSaveZoneId,
     [](Clock c) { return ClientUtils::itos(c.m_dataHandler->getDSTZoneID()); },
     [](Clock c, Text value) { return c.setZoneById(value); }, refreshZone, nullptr},
    {Key::autoDaylightSave,
     [](Clock c) { return ClientUtils::btos(c.m_dataHandler->getAutomaticDaylightSavingActive()); },
     [](Clock c, Text value) { return c.m_dataHandler->setAutomaticDaylightSavingActive(value); }, refreshZone, nullptr},
  }};
  return rows;
}
// clang-format on

const ManagementKey* ManagementKey::find(const std::string& key) {
  for (const ManagementKey& row : table())
    if (key == row.name) return &row;
  return nullptr;
}
