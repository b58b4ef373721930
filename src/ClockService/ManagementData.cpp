#include <ctime>

#include "ClockService.h"
#include "Context.h"
#include "Log.h"
#include "ManageableData.h"
#include "ManagedKeys.h"
#include "SecurityLogServiceIfc.h"
#include "SemaphoreGuard.h"

// Without settings no key is known.
std::optional<ManagedKeys> ClockService::managedKeys() {
  if (m_dataHandler == nullptr) return std::nullopt;
  return ManagedKeys({*this, *m_dataHandler, *m_dstZoneRules, m_localMgmt});
}

bool ClockService::getData(ManageableData& record) {
  const SemaphoreGuard guard(m_mgmtLock);
  const std::string key = record.getRootId();
  CLOCK_LOG(logInformation, "getData %s", key.c_str());
  const auto keys = managedKeys();
  const auto value = keys ? keys->get(key) : std::nullopt;
  if (value) {
    record.populate(key, *value);
  } else {
    CLOCK_LOG(logInformation, "Option %s is not supported. May be write only or non-existant.",
              key.c_str());
  }
  CLOCK_LOG(logInformation, "getData: %s : %s", key.c_str(), value.value_or("").c_str());
  return value.has_value();
}

// A text that is too short for its key throws std::out_of_range through here.
bool ClockService::setData(ManageableData& record) {
  std::string key;
  std::string value;
  std::optional<bool> accepted;
  {
    const SemaphoreGuard guard(m_mgmtLock);
    key = record.getRootId();
    record.interogate(key, value);
    CLOCK_LOG(logInformation, "setData: \"%s\": \"%s\"", key.c_str(), value.c_str());
    if (const auto keys = managedKeys()) accepted = keys->set(key, value);
    if (!accepted) {
      CLOCK_LOG(logInformation, "Option %s cannot be set. May be read only or non-existant.",
                key.c_str());
    }
  }
  recordManagementSet(key, value, accepted.value_or(false));
  return accepted.value_or(false);
}

// Every attempt goes to the security log, also refused ones and unknown keys. That service may
// appear later than the clock, so each set looks for it until it is found.
void ClockService::recordManagementSet(const std::string& key, const std::string& value,
                                       bool accepted) {
  if (m_securityLog == nullptr && m_context != nullptr) {
    m_securityLog =
        dynamic_cast<SecurityLogServiceIfc*>(m_context->getService("SecurityLogServiceIfc"));
  }
  SecurityLogServiceIfc* const securityLog = m_securityLog;
  if (securityLog == nullptr) return;
  const std::string text = "ClockSettings set data " + key + "(" + value + ")";
  securityLog->record(time(nullptr), 4, 1, 5, 3, !accepted, text, "", "");
}

bool ClockService::resetUserData() {
  const auto keys = managedKeys();
  return keys && keys->resetFormats();
}
