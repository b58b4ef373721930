// The settings as they come back from the store. An input that begins with "<" is the document
// itself, of whatever store: what is read from it can be stored and read again the same. Any other
// input is what somebody has put into the host's store, a line "KEY VALUE" each: a value that the
// document cannot carry costs that setting alone.

#include <map>

#include "ClientUtils.h"
#include "ClockServiceDataHandler.h"
#include "DataStorage.h"
#include "SemaphoreGuard.h"
#include "SettingKeys.h"
#include "XmlParser.h"
#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "framework/XmlText.h"
#include "fuzz/Property.h"
#include "services/MemoryDataAccess.h"

namespace {

using fuzz::hold;
using Texts = std::map<std::string, std::string>;
using Settings = ClockServiceDataHandler;

// A device with nothing but a store.
struct Device {
  Device() { context.add("DataAccessServiceIfc", &store); }

  bool put(const std::string& key, const std::string& value) {
    return store.setItem(DASUtilsStrings::ClockSettingsSchema, key, value);
  }

  host::VirtualClock clock;
  host::HostContext context{clock};
  host::MemoryDataAccess store;
};

Texts textsOf(const Settings& settings) {
  const SemaphoreGuard texts(settings.textLock);
  return {
      {SettingKeys::kFallbackTime, settings.getFallbackTime()},
      {SettingKeys::kDateFormat, ClientUtils::itos(settings.getDateFormat())},
      {SettingKeys::kTimeFormat, ClientUtils::itos(settings.getTimeFormat())},
      {SettingKeys::kSntpAddr, settings.getSntpAddr()},
      {SettingKeys::kNtpSecret, settings.getNtpSecret()},
      {SettingKeys::kTimezoneOffset, settings.getTimezoneOffsetStr()},
      {SettingKeys::kDaylightSavingActive, ClientUtils::btos(settings.getDaylightSavingActive())},
      {SettingKeys::kDaylightSavingMinutes, ClientUtils::itos(settings.getDaylightSavingMinutes())},
      {SettingKeys::kTimeSource, ClientUtils::itos(settings.getTimeSource())},
      {SettingKeys::kDstZoneId, ClientUtils::itos(settings.getDSTZoneID())},
      {SettingKeys::kAutomaticDaylightSaving,
       ClientUtils::btos(settings.getAutomaticDaylightSavingActive())}};
}

Texts read(Device& device) {
  return textsOf(Settings(device.context, PhysDefs::subVariantUnknown));
}

void holdDocument(const std::string& document) {
  Device device;
  Settings settings(device.context, PhysDefs::subVariantUnknown);
  XmlParser parser(&settings, ClockServiceXmlStartElement, ClockServiceXmlEndElement,
                   ClockServiceXmlCharacterDataHandler);
  static_cast<void>(parser.parseMessage(document.data(), static_cast<int>(document.size())));
  const Texts texts = textsOf(settings);
  for (const auto& [key, value] : texts) {
    hold(host::isXmlText(value), "a document gives texts that another can carry", value);
    hold(device.put(key, value), "the store is there", key);
  }
  hold(read(device) == texts, "what is written is read back the same", document);
}

bool isText(const std::string& key) {
  return key == SettingKeys::kFallbackTime || key == SettingKeys::kSntpAddr ||
         key == SettingKeys::kNtpSecret;
}

void holdStore(fuzz::Reader lines) {
  Device device;
  const Texts defaults = read(device);
  Texts values;
  while (!lines.atEnd()) {
    fuzz::Reader words(lines.line());
    const std::string key(words.word());
    values[key] = fuzz::grown(words.rest());
    hold(device.put(key, values[key]), "the store is there", key);
  }
  for (const auto& [key, came] : read(device)) {
    const auto value = values.find(key);
    if (value == values.end() || !host::isXmlText(value->second))
      hold(came == defaults.at(key), "what is not there has its default", key);
    else if (isText(key))
      hold(came == value->second, "a text comes back as it is", key);
  }
}

}  // namespace

void fuzz::property(std::string_view input) {
  if (input.starts_with('<')) return holdDocument(std::string(input));
  holdStore(Reader(input));
}
