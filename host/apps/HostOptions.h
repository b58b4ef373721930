#pragma once

#include <sys/types.h>

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "apps/OptionParser.h"
#include "runtime/Device.h"
#include "scenario/SuiteOptions.h"

namespace host {

struct DefaultPaths;

// The command line of clockhost.
struct HostOptions {
  std::filesystem::path plugin;
  std::filesystem::path standIns;  // folder of stand-ins for the device's programs
  std::filesystem::path socket;
  std::filesystem::path controlSocket;
  std::optional<gid_t> socketGroup;  // may connect to `socket`, as its owner may
  std::filesystem::path deviceRoot;  // "/": the device's own paths
  DeviceOptions device;
  bool systemClock = false;
  double speed = 1;               // virtual seconds per real one; infinity: as fast as possible
  int logLevel = 4;               // 0-6
  std::filesystem::path logFile;  // empty: standard error
  int readyDescriptor = -1;       // see Readiness; -1: none
  std::vector<std::pair<std::string, std::string>> programs;  // path on the device, path here
  SuiteOptions scenarios;                                     // no files: none
};

// The table of options. Values go to `options`, which outlives the parser.
[[nodiscard]] OptionParser hostOptionParser(HostOptions& options);

// Empty: help or version was requested, and is on `out`. Throws UsageError.
[[nodiscard]] std::optional<HostOptions> readHostOptions(std::span<const std::string> words,
                                                         const DefaultPaths& defaults,
                                                         std::ostream& out);

}  // namespace host
