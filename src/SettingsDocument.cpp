// The parser's callbacks, which load the settings from the store's XML document.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "ClientUtils.h"
#include "ClockServiceDataHandler.h"
#include "Saturate.h"
#include "SettingKeys.h"

namespace {

using namespace SettingKeys;

// Which setting the open XML element carries.
enum Element : std::int32_t {
  elementNone = 0,
  elementFallbackTime = 2,
  elementDateFormat,
  elementTimeFormat,
  elementSntpAddr,
  elementNtpSecret,
  elementTimezoneOffset,
  elementDaylightSavingActive,
  elementDaylightSavingMinutes,
  elementTimeSource,
  elementDstZoneId,
  elementAutomaticDaylightSaving
};

constexpr std::array<const char*, 11> kElementNames{kFallbackTime,
                                                    kDateFormat,
                                                    kTimeFormat,
                                                    kSntpAddr,
                                                    kNtpSecret,
                                                    kTimezoneOffset,
                                                    kDaylightSavingActive,
                                                    kDaylightSavingMinutes,
                                                    kTimeSource,
                                                    kDstZoneId,
                                                    kAutomaticDaylightSaving};

std::int32_t toNumber(const std::string& text) {
  return saturate<std::int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

}  // namespace

void ClockServiceDataHandler::loadElement() {
  switch (currentElement) {
    case elementFallbackTime:
      fallbackTime = characterData;
      break;
    case elementDateFormat:
      dateFormat = toNumber(characterData);
      break;
    case elementTimeFormat:
      timeFormat = toNumber(characterData);
      break;
    case elementSntpAddr:
      sntpAddr = characterData;
      break;
    case elementNtpSecret:
      ntpSecret = characterData;
      break;
    case elementTimezoneOffset:
      timezoneOffset = toFloat(std::strtod(characterData.c_str(), nullptr));
      break;
    case elementDaylightSavingActive:
      daylightSavingActive = ClientUtils::stob(characterData);
      break;
    case elementDaylightSavingMinutes:
      daylightSavingMinutes = toNumber(characterData);
      break;
    case elementTimeSource:
      timeSource = toNumber(characterData);
      break;
    case elementDstZoneId:
      dstZoneID = toNumber(characterData);
      break;
    case elementAutomaticDaylightSaving:
      automaticDaylightSavingActive = ClientUtils::stob(characterData);
      break;
    default:
      break;
  }
}

void ClockServiceXmlStartElement(void* userData, const char* name, const char** /*attributes*/) {
  auto& handler = *static_cast<ClockServiceDataHandler*>(userData);
  handler.currentElement = elementNone;
  for (std::size_t i = 0; i < kElementNames.size(); ++i) {
    if (std::strcmp(name, kElementNames[i]) == 0)
      handler.currentElement = elementFallbackTime + static_cast<std::int32_t>(i);
  }
}

// Replaces the text instead of appending to it, by design: settings are short single tokens, and
// only the last piece of a text counts.
void ClockServiceXmlCharacterDataHandler(void* userData, const char* text, int length) {
  auto& handler = *static_cast<ClockServiceDataHandler*>(userData);
  handler.characterData.assign(text, static_cast<std::size_t>(std::max(length, 0)));
}

void ClockServiceXmlEndElement(void* userData, const char* /*name*/) {
  auto& handler = *static_cast<ClockServiceDataHandler*>(userData);
  handler.loadElement();
  handler.currentElement = elementNone;
  handler.characterData.clear();
}
