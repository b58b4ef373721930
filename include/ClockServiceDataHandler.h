#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "DataStorage.h"
#include "PhysDefs.h"
#include "Semaphore.h"
#include "ThreadSafety.h"

class Context;
class XmlParser;

// The clock's settings: loaded from the device's store at construction, written through to it
// before a change takes effect in memory.
// Owner: the service. Thread: any; texts are read and set under textLock. Failure: a setter returns
// false and the old value stays, in memory and in the store.
class ClockServiceDataHandler {
 public:
  // Loads every setting; one that is not stored has its default, which depends on the hardware.
  ClockServiceDataHandler(Context& context, PhysDefs::hardwareSubVariant subVariant);
  virtual ~ClockServiceDataHandler();
  ClockServiceDataHandler(const ClockServiceDataHandler&) = delete;
  ClockServiceDataHandler& operator=(const ClockServiceDataHandler&) = delete;

  // Guards the settings that are texts. Also held while the store writes, so that memory and store
  // agree.
  mutable Semaphore textLock{1, 1};

  // Puts the settings back to their defaults and loads them again: the two display formats only, or
  // all of them.
  void reinitialiseData(bool formatsOnly) CLOCK_EXCLUDES(textLock, parseLock);

  // Defaults of all settings but the two display formats, in memory only.
  void setDefaultDataValues() CLOCK_REQUIRES(textLock);
  int getDefaultDateFormat() const;  // 0 or 2
  int getDefaultTimeFormat() const;  // 0 or 1

  const std::string& getFallbackTime() const CLOCK_REQUIRES(textLock) { return fallbackTime; }
  int getDateFormat() const { return dateFormat; }  // 0-2, as stored
  int getTimeFormat() const { return timeFormat; }  // 0 is 24-hour
  const std::string& getSntpAddr() const CLOCK_REQUIRES(textLock) { return sntpAddr; }
  const std::string& getNtpSecret() const CLOCK_REQUIRES(textLock) { return ntpSecret; }
  float getTimezoneOffset() const { return timezoneOffset; }  // hours east of UTC
  std::string getTimezoneOffsetStr() const;                   // the same, 6 significant digits
  bool getDaylightSavingActive() const { return daylightSavingActive; }
  int getDaylightSavingMinutes() const { return daylightSavingMinutes; }
  int getTimeSource() const { return timeSource; }
  int getDSTZoneID() const { return dstZoneID; }  // see DSTZoneRules
  bool getAutomaticDaylightSavingActive() const { return automaticDaylightSavingActive; }
  int getSoftwareType() const { return softwareType; }  // 0 unknown, 1 SIP, 2 QEX, 3 TDM

  // True when the value was accepted and stored. Numbers are decimal text, stored as it is;
  // booleans are exactly "true" or "false".
  bool setFallbackTime(const std::string& value) CLOCK_REQUIRES(textLock);  // UTC string
  bool setNtpSecret(const std::string& value) CLOCK_REQUIRES(textLock);
  bool setDateFormat(const std::string& value);
  bool setTimeFormat(const std::string& value);
  bool setDaylightSavingMinutes(const std::string& value);
  bool setTimeSource(const std::string& value);
  bool setDaylightSavingActive(const std::string& value);
  bool setAutomaticDaylightSavingActive(const std::string& value);
  bool setDSTZoneID(int id);

  // An IP address without brackets, or a host name. An unchanged address counts as refused.
  bool setSntpAddr(const std::string& value) CLOCK_REQUIRES(textLock);

  // Hours east of UTC; a number outside -12.5 to +12.5 counts as seconds. True when the setting has
  // this value afterwards. The text form fills rejectReason when the text is empty.
  bool setTimezoneOffset(float offset);
  bool setTimezoneOffset(const std::string& text, std::string& rejectReason);

  // "Velmora SIP", "Velmora QEX" or "Velmora TDM"; other texts are ignored. Not stored.
  void setSoftwareType(const std::string& value);

 private:
  friend void ClockServiceXmlStartElement(void*, const char*, const char**);
  friend void ClockServiceXmlEndElement(void*, const char*);
  friend void ClockServiceXmlCharacterDataHandler(void*, const char*, int);

  bool isSubVariant2To4() const;
  bool isAcceptableSntpAddr(const std::string& value) const;
  bool storeNumber(const char* key, const std::string& value, std::atomic<std::int32_t>& member);
  bool storeFlag(const char* key, const std::string& value, std::atomic<bool>& member);
  bool storeText(const char* key, const std::string& value, std::string& member)
      CLOCK_REQUIRES(textLock);
  void loadElement() CLOCK_REQUIRES(textLock, parseLock);

  std::string fallbackTime CLOCK_GUARDED_BY(textLock);
  std::atomic<std::int32_t> dateFormat{};
  std::atomic<std::int32_t> timeFormat{};
  std::string sntpAddr CLOCK_GUARDED_BY(textLock);
  std::string ntpSecret CLOCK_GUARDED_BY(textLock);
  std::atomic<float> timezoneOffset{};
  std::atomic<bool> daylightSavingActive{};
  std::atomic<std::int32_t> daylightSavingMinutes{};
  std::atomic<std::int32_t> timeSource{};
  std::atomic<std::int32_t> dstZoneID{};
  std::atomic<bool> automaticDaylightSavingActive{};
  std::atomic<std::int32_t> softwareType{};
  std::unique_ptr<XmlParser> xmlParser CLOCK_POINTEE_GUARDED_BY(parseLock);
  std::int32_t currentElement CLOCK_GUARDED_BY(parseLock){};
  std::string characterData CLOCK_GUARDED_BY(parseLock);
  Semaphore parseLock{1, 1, false};
  DataStorage storage;
  const PhysDefs::hardwareSubVariant hardwareSubVariant;
};

// What the parser calls while the settings document is loaded; the user data is the handler, which
// holds both of its locks then.
void ClockServiceXmlStartElement(void* userData, const char* name,
                                 const char** attributes) CLOCK_UNCHECKED_LOCKING;
void ClockServiceXmlEndElement(void* userData, const char* name) CLOCK_UNCHECKED_LOCKING;
void ClockServiceXmlCharacterDataHandler(void* userData, const char* text,
                                         int length) CLOCK_UNCHECKED_LOCKING;
