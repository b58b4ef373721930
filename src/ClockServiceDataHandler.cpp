#include "ClockServiceDataHandler.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <locale>
#include <sstream>

#include "ClientUtils.h"
#include "NetHelper.h"
#include "RejectReason.h"
#include "Saturate.h"
#include "SemaphoreGuard.h"
#include "SettingKeys.h"
#include "XmlParser.h"

namespace {

using namespace SettingKeys;

constexpr const char* kDefaultFallbackTime = "2016-06-16T00:00:00+00:00";
constexpr std::int32_t kZoneUnitedStates = 12;

std::string offsetText(float hours) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << static_cast<double>(hours);
  return stream.str();
}

}  // namespace

ClockServiceDataHandler::ClockServiceDataHandler(Context& context,
                                                 PhysDefs::hardwareSubVariant subVariant)
    : storage(context, DASUtilsStrings::ClockSettingsSchema), hardwareSubVariant(subVariant) {
  storage.findDataAccessService();
  xmlParser =
      std::make_unique<XmlParser>(this, ClockServiceXmlStartElement, ClockServiceXmlEndElement,
                                  ClockServiceXmlCharacterDataHandler);
  reinitialiseData(false);
}

// The parser's user data is this object, so the parser is destroyed first.
ClockServiceDataHandler::~ClockServiceDataHandler() {
  xmlParser.reset();
}

bool ClockServiceDataHandler::isSubVariant2To4() const {
  return static_cast<unsigned int>(hardwareSubVariant) - 2U <= 2U;
}

int ClockServiceDataHandler::getDefaultDateFormat() const {
  return isSubVariant2To4() ? 2 : 0;
}

int ClockServiceDataHandler::getDefaultTimeFormat() const {
  return isSubVariant2To4() ? 1 : 0;
}

void ClockServiceDataHandler::setDefaultDataValues() {
  const bool daylightSaving = isSubVariant2To4();
  fallbackTime = kDefaultFallbackTime;
  sntpAddr.clear();
  ntpSecret.clear();
  timezoneOffset = 0.0F;
  daylightSavingMinutes = 60;
  timeSource = 0;
  softwareType = 0;
  automaticDaylightSavingActive = daylightSaving;
  dstZoneID = daylightSaving ? kZoneUnitedStates : 0;
  daylightSavingActive = daylightSaving;
}

void ClockServiceDataHandler::reinitialiseData(bool formatsOnly) {
  const SemaphoreGuard texts(textLock);
  dateFormat = getDefaultDateFormat();
  timeFormat = getDefaultTimeFormat();
  std::string keys = std::string(kDateFormat) + " " + kTimeFormat;
  if (!formatsOnly) {
    setDefaultDataValues();
    for (const char* const key :
         {kFallbackTime, kSntpAddr, kNtpSecret, kTimezoneOffset, kDaylightSavingActive,
          kDaylightSavingMinutes, kTimeSource, kDstZoneId, kAutomaticDaylightSaving})
      keys.append(" ").append(key);
  }
  const std::string document = storage.getDataItems(keys);
  const SemaphoreGuard guard(parseLock);
  xmlParser->parseMessage(document.c_str(),
                          saturate<int>(static_cast<std::int64_t>(document.size())));
}

bool ClockServiceDataHandler::storeText(const char* key, const std::string& value,
                                        std::string& member) {
  if (!storage.setDataItem(key, value)) return false;
  member = value;
  return true;
}

bool ClockServiceDataHandler::storeNumber(const char* key, const std::string& value,
                                          std::atomic<std::int32_t>& member) {
  if (!storage.setDataItem(key, value)) return false;
  member = ClientUtils::stoi(value);
  return true;
}

bool ClockServiceDataHandler::storeFlag(const char* key, const std::string& value,
                                        std::atomic<bool>& member) {
  if (value != "true" && value != "false") return false;
  if (!storage.setDataItem(key, value)) return false;
  member = ClientUtils::stob(value);
  return true;
}

bool ClockServiceDataHandler::setFallbackTime(const std::string& value) {
  return storeText(kFallbackTime, value, fallbackTime);
}

bool ClockServiceDataHandler::setNtpSecret(const std::string& value) {
  return storeText(kNtpSecret, value, ntpSecret);
}

bool ClockServiceDataHandler::setDateFormat(const std::string& value) {
  return storeNumber(kDateFormat, value, dateFormat);
}

bool ClockServiceDataHandler::setTimeFormat(const std::string& value) {
  return storeNumber(kTimeFormat, value, timeFormat);
}

bool ClockServiceDataHandler::setDaylightSavingMinutes(const std::string& value) {
  return storeNumber(kDaylightSavingMinutes, value, daylightSavingMinutes);
}

bool ClockServiceDataHandler::setTimeSource(const std::string& value) {
  return storeNumber(kTimeSource, value, timeSource);
}

bool ClockServiceDataHandler::setDaylightSavingActive(const std::string& value) {
  return storeFlag(kDaylightSavingActive, value, daylightSavingActive);
}

bool ClockServiceDataHandler::setAutomaticDaylightSavingActive(const std::string& value) {
  return storeFlag(kAutomaticDaylightSaving, value, automaticDaylightSavingActive);
}

bool ClockServiceDataHandler::setDSTZoneID(int id) {
  if (!storage.setDataItem(kDstZoneId, ClientUtils::itos(id))) return false;
  dstZoneID = id;
  return true;
}

bool ClockServiceDataHandler::isAcceptableSntpAddr(const std::string& value) const {
  switch (NetHelper::verifyIpAddress(value, false)) {
    case 0:
      return ClientUtils::validGlobalHostname(value);
    case 1:
      return value[0] != '[';
    default:
      return true;
  }
}

// An unchanged address counts as refused, so that the caller does not restart the client.
bool ClockServiceDataHandler::setSntpAddr(const std::string& value) {
  const bool acceptable = isAcceptableSntpAddr(value);
  if (value == sntpAddr || !acceptable) return false;
  return storeText(kSntpAddr, value, sntpAddr);
}

std::string ClockServiceDataHandler::getTimezoneOffsetStr() const {
  return offsetText(timezoneOffset);
}

// A number too large for hours counts as seconds; the result is not checked again: 50400 becomes 14
// hours. NaN exceeds neither limit.
bool ClockServiceDataHandler::setTimezoneOffset(float offset) {
  constexpr float kFurthestHours = 12.5F;
  constexpr float kSecondsPerHour = 3600.0F;
  if (offset < -kFurthestHours || offset > kFurthestHours) offset /= kSecondsPerHour;
  if (offset == timezoneOffset) return true;
  if (!storage.setDataItem(kTimezoneOffset, offsetText(offset))) return false;
  timezoneOffset = offset;
  return true;
}

bool ClockServiceDataHandler::setTimezoneOffset(const std::string& text,
                                                std::string& rejectReason) {
  if (text.empty()) {
    setRejectReason(rejectReasonInvalidValue, rejectReason, "Timezone offset cannot be blank");
    return false;
  }
  return setTimezoneOffset(toFloat(std::strtod(text.c_str(), nullptr)));
}

void ClockServiceDataHandler::setSoftwareType(const std::string& value) {
  constexpr std::array<const char*, 3> kNames{"Velmora SIP", "Velmora QEX", "Velmora TDM"};
  for (std::size_t i = 0; i < kNames.size(); ++i)
    if (value == kNames[i]) softwareType = static_cast<std::int32_t>(i) + 1;
}
