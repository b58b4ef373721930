// Loading the settings from the store. An input that begins with "<" is the store's document:
// settings that are read from it can be stored and loaded again unchanged. Any other input is the
// content of the host's store, one line "KEY VALUE" each: a value that the document cannot hold
// affects only its own setting.

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

// A device whose only service is a store.
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
    hold(host::isXmlText(value), "settings are texts that a document can hold", value);
    hold(device.put(key, value), "the store accepts any value", key);
  }
  hold(read(device) == texts, "stored settings are loaded unchanged", document);
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
    values[key] = fuzz::expanded(words.rest());
    hold(device.put(key, values[key]), "the store accepts any value", key);
  }
  for (const auto& [key, loaded] : read(device)) {
    const auto value = values.find(key);
    if (value == values.end() || !host::isXmlText(value->second)) {
      hold(loaded == defaults.at(key), "a missing or invalid setting has its default", key);
    } else if (isText(key)) {
      hold(loaded == value->second, "a text is loaded unchanged", key);
    }
  }
}

}  // namespace

void fuzz::property(std::string_view input) {
  if (input.starts_with('<')) return holdDocument(std::string(input));
  holdStore(Reader(input));
}
