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

// A device that has nothing but a settings store, in memory.
// Owner: the test; it outlives the settings records made from it.
class SettingsStore {
 public:
  SettingsStore() { context.add("DataAccessServiceIfc", &access); }

  // A settings record as the service makes it on hardware of this sub-variant.
  std::unique_ptr<ClockServiceDataHandler> load(int subVariant = 0) {
    return std::make_unique<ClockServiceDataHandler>(
        context, static_cast<PhysDefs::hardwareSubVariant>(subVariant));
  }

  // Another process writes, behind the record's back.
  void put(const std::string& key, const std::string& value) {
    (void)access.setItem(DASUtilsStrings::ClockSettingsSchema, key, value);
  }
  // The stored text; nothing when there is none.
  std::optional<std::string> stored(const std::string& key) {
    return access.getItem(DASUtilsStrings::ClockSettingsSchema, key);
  }

  // How many writes were asked of the store, refused ones too.
  [[nodiscard]] std::size_t writes() const { return access.setsAsked(); }
  void refuseWrites(std::size_t number) { access.refuseSets(0, number); }

  host::VirtualClock clock;
  host::HostContext context{clock};
  host::MemoryDataAccess access;
};

}  // namespace unit
