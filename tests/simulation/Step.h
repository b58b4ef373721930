#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulation {

enum class Act {
  pass,          // numbers: milliseconds
  next,          // time passes to the next timer
  jump,          // numbers: wall time in milliseconds since 1970
  set,           // texts: management key, value
  get,           // texts: management key
  reset,         // resets the user's formats to the defaults
  deviceValue,   // texts: key, value of the device
  outsideStore,  // texts: storage key, value written by another program
  ask,           // texts: UTC text; numbers: seconds, then the six fields of getUTCTime
  invalidCall,   // texts: the fault of the request ("unknown", "garbage", "codec", "nobody")
  observe,       // texts: observer
  unobserve,     // texts: observer
  setTime,       // texts: caller; numbers: hours, minutes, seconds
  setDate,       // texts: caller; numbers: day, month, year
  setSeconds,    // texts: caller; numbers: seconds since 1970
  saveTime,      // texts: caller
  report,        // numbers: seconds reported, 1 if the client sets the clock first
  jack,          // numbers: plug, status
  storeRefuses,  // numbers: 1 sets are refused, 0 no longer
  storeSilent,   // numbers: 1 nothing can be read, 0 no longer
  launchFails,   // numbers: 1 programs cannot be started, 0 no longer
  lookupsFail,   // numbers: 1 no name can be looked up, 0 no longer
  service,       // texts: name; numbers: 1 appears, 0 disappears
  mayReset,      // texts: key; numbers: 1 it is user data, 0 it is not
  logLevel,      // numbers: 0-6
  fallbackFile,  // texts: content
  idle,          // run, shutdown and hook switch: no effect
  restart,       // numbers: 1 orderly or 0 power cut, variant, missing services, wall time in ms;
                 // texts: TZ of the new process
};

// One step of a run. Only data, so that any list of steps can be run again. Callers and observers:
// "peer..." is another process, "stranger" one that gets no events, "nobody" a null observer; all
// others are in the service's own process.
struct Step {
  Act act = Act::pass;
  std::vector<std::int64_t> numbers{};
  std::vector<std::string> texts{};
};

using Steps = std::vector<Step>;
using Lines = std::vector<std::string>;

// One readable line.
[[nodiscard]] std::string describe(const Step& step);

[[nodiscard]] inline bool isRemote(const std::string& name) {
  return name.rfind("peer", 0) == 0 || name == "stranger";
}

// The services of the framework; bit n of "missing services" is row n.
inline constexpr const char* kServices[] = {"PhysicalInterfaceServiceIfc", "LocalMgmtIfc",
                                            "SecurityLogServiceIfc", "DataAccessServiceIfc"};
enum ServiceRow { physicalService, managementService, securityService, storeService };

// The clock's management keys.
inline constexpr const char* kManagementKeys[] = {"time",
                                                  "simple-time",
                                                  "simple-date",
                                                  "date-format",
                                                  "time-format",
                                                  "sntp-addr",
                                                  "ntp-secret",
                                                  "sntp-tz-offset",
                                                  "daylight-save",
                                                  "daylight-save-minutes",
                                                  "time-source",
                                                  "daylight-save-zone-list",
                                                  "daylight-save-zone-index",
                                                  "daylight-save-zone-text",
                                                  "daylight-save-zone-id",
                                                  "auto-daylight-save"};

}  // namespace simulation
