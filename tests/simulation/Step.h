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
  reset,         // the user's settings back to the defaults
  deviceValue,   // texts: key, value of the device's own
  outsideStore,  // texts: storage key, value written by somebody else
  call,          // texts: method, caller, codec; arguments
  garbage,       // texts: bytes of a remote request, caller
  callNobody,    // texts: method, caller; the request finds no service
  observe,       // texts: observer
  unobserve,     // texts: observer
  report,        // numbers: seconds reported, 1 if the client sets the clock first
  jack,          // numbers: plug, status
  setTime,       // numbers: hours, minutes, seconds
  setSeconds,    // numbers: seconds since 1970
  setDate,       // numbers: day, month, year
  saveFallback,  //
  convert,       // texts: UTC text
  storeRefuses,  // numbers: 1 sets are refused, 0 no longer
  storeSilent,   // numbers: 1 nothing can be read, 0 no longer
  launchFails,   // numbers: 1 programs cannot be started, 0 no longer
  lookupsFail,   // numbers: 1 no name can be looked up, 0 no longer
  service,       // texts: name; numbers: 1 there, 0 gone
  mayReset,      // texts: key; numbers: 1 it is the user's, 0 it is not
  logLevel,      // numbers: 0-6
  fallbackFile,  // texts: content
  idle,          // hook switch, run and shutdown: nothing may come of them
  restart,       // numbers: 1 in order or 0 power cut, variant, missing services, wall ms
};

struct Argument {
  std::string name;
  bool isText = false;
  int number = 0;
  std::string text;
};

// One thing that happens to the telephone: data alone, so that any list of steps can be lived
// again.
struct Step {
  Act act = Act::pass;
  std::vector<std::int64_t> numbers;
  std::vector<std::string> texts;
  std::vector<Argument> arguments;
};

using Steps = std::vector<Step>;

// One line that a person can read.
[[nodiscard]] std::string describe(const Step& step);

// Bits of "missing services" of a restart.
struct Missing {
  static constexpr std::int64_t physical = 1;
  static constexpr std::int64_t management = 2;
  static constexpr std::int64_t security = 4;
  static constexpr std::int64_t store = 8;
};

// Names under which the framework knows these services.
struct Services {
  static constexpr const char* physical = "PhysicalInterfaceServiceIfc";
  static constexpr const char* management = "LocalMgmtIfc";
  static constexpr const char* security = "SecurityLogServiceIfc";
  static constexpr const char* store = "DataAccessServiceIfc";
};

}  // namespace simulation
