#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "ClockServiceDataHandler.h"
#include "DataStorage.h"
#include "PhysDefs.h"
#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "services/MemoryDataAccess.h"

namespace unit {

// Every stored setting as one text; with the defaults of most devices, kDefaults.
inline std::string describe(const ClockServiceDataHandler& h) {
  const auto flag = [](bool value) { return value ? std::string(" true") : std::string(" false"); };
  return h.getFallbackTime() + " " + std::to_string(h.getDateFormat()) + " " +
         std::to_string(h.getTimeFormat()) + " \"" + h.getSntpAddr() + "\" \"" + h.getNtpSecret() +
         "\" " + h.getTimezoneOffsetStr() + flag(h.getDaylightSavingActive()) + " " +
         std::to_string(h.getDaylightSavingMinutes()) + " " + std::to_string(h.getTimeSource()) +
         " " + std::to_string(h.getDSTZoneID()) + flag(h.getAutomaticDaylightSavingActive());
}

inline constexpr const char* kDefaults =
    "2016-06-16T00:00:00+00:00 0 0 \"\" \"\" 0 false 60 0 0 false";
inline constexpr const char* kAmericanDefaults =
    "2016-06-16T00:00:00+00:00 2 1 \"\" \"\" 0 true 60 0 12 true";

// A device that has only a settings store, in memory.
// Owner: the test; it outlives the settings loaded from it.
class SettingsInMemory {
 public:
  SettingsInMemory() { context.add("DataAccessServiceIfc", &access); }

  // The settings as the service loads them on hardware of this sub-variant.
  std::unique_ptr<ClockServiceDataHandler> load(int subVariant = 0) {
    return std::make_unique<ClockServiceDataHandler>(
        context, static_cast<PhysDefs::hardwareSubVariant>(subVariant));
  }

  // Writes to the store alone, as another process does.
  void put(const std::string& key, const std::string& value) {
    (void)access.setItem(DASUtilsStrings::ClockSettingsSchema, key, value);
  }
  // The stored text, if there is one.
  std::optional<std::string> stored(const std::string& key) {
    return access.getItem(DASUtilsStrings::ClockSettingsSchema, key);
  }

  // How many writes the store received, including refused ones.
  [[nodiscard]] std::size_t writes() const { return access.setsAsked(); }
  void refuseWrites(std::size_t number) { access.refuseSets(0, number); }

  host::VirtualClock clock;
  host::HostContext context{clock};
  host::MemoryDataAccess access;
};

}  // namespace unit
