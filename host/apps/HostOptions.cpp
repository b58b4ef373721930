#include "apps/HostOptions.h"

#include <grp.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ostream>

#include "apps/Readiness.h"
#include "base/DefaultPaths.h"
#include "base/PrintableText.h"
#include "remote/SocketAddress.h"
#include "verbs/CallWords.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

constexpr std::size_t kMacDigits = 12;
constexpr int kMostVariant = 999;  // a bound for the error line; no hardware has a larger number

constexpr ExitStatus kStatuses[] = {
    {0, "ended by SIGINT or SIGTERM, or the scenarios passed"},
    {1, "the host could not start, or a scenario failed"},
    {2, "wrong option, or a scenario that could not be read"},
};

// Each of the following returns an error text, empty if the value is valid.

std::string takeMac(const std::string& text, std::string& mac) {
  const bool hex = std::all_of(text.begin(), text.end(),
                               [](unsigned char letter) { return std::isxdigit(letter) != 0; });
  if (!hex || text.size() != kMacDigits) {
    return quotedText(text) + " is not 12 hexadecimal digits, as in 0001E3A1B2C3";
  }
  mac = text;
  return "";
}

std::string takeSpeed(const std::string& text, double& speed) {
  const auto parsed = parseSpeed(text);
  if (!parsed) return quotedText(text) + " is not a speed: " + std::string(kSpeedForms);
  speed = *parsed;
  return "";
}

std::string takeInstant(const std::string& text, std::optional<std::string>& at) {
  const auto instant = parseInstant(text);
  if (!instant) return quotedText(text) + " is not an instant: " + std::string(kInstantForms);
  at = longInstantText(*instant);
  return "";
}

std::string takeReadyDescriptor(const std::string& text, int& descriptor) {
  const auto number = parseInteger(text);
  if (!number)
    return quotedText(text) + " is not the number of a descriptor, as in `--ready-fd 3 3>FILE`";
  descriptor = *number;
  return "";
}

std::string takeProgram(const std::string& text, HostOptions& options) {
  const std::size_t equals = text.find('=');
  if (!text.starts_with('/') || equals == std::string::npos || equals + 1 == text.size()) {
    return quotedText(text) + " is not DEVICEPATH=PATH, as in /sbin/ntpclient=./client";
  }
  options.programs.emplace_back(text.substr(0, equals), text.substr(equals + 1));
  return "";
}

// getgrnam sets errno also when there is no such group, to a value that depends on the system.
bool isFailure(int error) {
  constexpr std::array kFailures = {EINTR, EIO, EMFILE, ENFILE, ENOMEM};
  return std::find(kFailures.begin(), kFailures.end(), error) != kFailures.end();
}

gid_t groupNamed(const std::string& name) {
  errno = 0;
  const group* const found = ::getgrnam(name.c_str());  // NOLINT(concurrency-mt-unsafe): no thread
  if (found != nullptr) return found->gr_gid;
  if (isFailure(errno)) {
    throw UsageError("--socket-group: the group " + quotedText(name) +
                     " cannot be looked up: " + std::strerror(errno));
  }
  throw UsageError("--socket-group: there is no group " + quotedText(name) + " here");
}

std::string takeGroup(const std::string& text, std::optional<gid_t>& group) {
  if (text.empty()) return "the name is empty; name a group";
  group = groupNamed(text);
  return "";
}

std::string takeScenario(const std::string& text, SuiteOptions& options) {
  options.files.emplace_back(text);
  return checkPath(text);
}

// For a choice of two, which the parser has checked.
Option::Take choice(bool& target, const char* whenTrue) {
  return [&target, whenTrue](const std::string& text) {
    target = text == whenTrue;
    return std::string();
  };
}

void addSocketOptions(OptionParser& parser, HostOptions& options) {
  parser.addPath("--socket", "Socket for calls and events", options.socket);
  parser.add({"--socket-group", "NAME",
              "Group whose members may connect to --socket, as its owner may",
              [&](const std::string& text) { return takeGroup(text, options.socketGroup); }});
  parser
      .addPath("--control-socket", "Socket for control requests, for its owner only",
               options.controlSocket)
      .shownDefault = "--socket with \".control\" appended";
}

void addClockOptions(OptionParser& parser, HostOptions& options) {
  parser.add({"--clock", "virtual|system",
              "Clock to run on; system sets this machine's clock and needs the privilege to",
              choice(options.systemClock, "system"), "virtual"});
  parser.add({"--speed", "X",
              "Virtual seconds per real second; 0 pauses, max runs as fast as possible",
              [&](const std::string& text) { return takeSpeed(text, options.speed); }, "1"});
}

void addHostOptions(OptionParser& parser, HostOptions& options) {
  parser.addPath("--plugin", "Plug-in to load", options.plugin);
  addSocketOptions(parser, options);
  parser
      .addPath("--device-root", "Folder for the device's /data and /tmp/votk; / on a real device",
               options.deviceRoot, "DIR")
      .shownDefault = "\"device\" in --state";
  addClockOptions(parser, options);
  parser.addNumber("--log-level", "0..6",
                   "Detail of the log, from 0 (fatal errors) to 6 (everything)", options.logLevel,
                   0, 6);
  parser.addPath("--log-file", "Write the log here; SIGHUP opens the file again", options.logFile)
      .shownDefault = "standard error";
  parser.add({"--ready-fd", "N", "Write a newline to this descriptor when the host answers",
              [&](const std::string& text) {
                return takeReadyDescriptor(text, options.readyDescriptor);
              }});
  parser.add({"--program", "DEVICEPATH=PATH",
              "Run PATH for a program of the device instead of its stand-in; may be repeated",
              [&](const std::string& text) { return takeProgram(text, options); }});
}

void addDeviceOptions(OptionParser& parser, DeviceOptions& device) {
  parser.addPath("--state", "Folder for settings and security log", device.state, "DIR");
  parser.addNumber("--variant", "N", "Hardware sub-variant; 2, 3 and 4 start with other defaults",
                   device.variant, 0, kMostVariant);
  parser.add({"--software-type", "TEXT", "Telephony software", [&](const std::string& text) {
                device.softwareType = text;
                return text.empty() ? "the text is empty; leave the option out for none" : "";
              }});
  parser.add({"--mac", "12HEX", "MAC address",
              [&](const std::string& text) { return takeMac(text, device.mac); }});
  parser.add(
      {"--network", "up|down", "Network link at start", choice(device.networkUp, "up"), "down"});
  parser.add({"--at", "UTC", "Time at start",
              [&](const std::string& text) { return takeInstant(text, device.at); },
              "the saved time"});
}

void addScenarioOptions(OptionParser& parser, SuiteOptions& options) {
  parser
      .add({"--scenario", "FILE|DIR ...",
            "Run scenarios, or those in a folder, and exit: 0 passed, 1 failed, 2 could not be "
            "read",
            [&](const std::string& text) { return takeScenario(text, options); }})
      .manyValues = true;
  parser.addNumber("--jobs", "N", "How many scenarios run at a time", options.jobs, 1, kMostJobs);
  parser.addFlag("--keep-going", "Run all scenarios, also after a failure", options.keepGoing);
  parser.addFlag("--tap", "Report the scenarios in the TAP format", options.tap);
  parser.addPath("--junit", "Write a report of the scenarios in the JUnit format", options.junit);
}

// Options that a scenario would ignore.
void requireForScenarios(const OptionParser& parser, const HostOptions& options) {
  if (options.systemClock) {
    throw UsageError("--scenario runs under a clock of its own; leave --clock system out");
  }
  for (const char* const name : {"--variant", "--software-type", "--mac", "--network", "--at"}) {
    if (!parser.given(name)) continue;
    throw UsageError(std::string(name) + " is not for scenarios; write `" + (name + 2) +
                     "` at the beginning of the file");
  }
  for (const char* const name :
       {"--speed", "--state", "--socket", "--socket-group", "--control-socket", "--device-root",
        "--log-level", "--log-file", "--ready-fd", "--program"}) {
    if (!parser.given(name)) continue;
    throw UsageError(std::string(name) + " is not for scenarios; leave it out");
  }
}

void requireScenarios(const OptionParser& parser) {
  for (const char* const name : {"--jobs", "--keep-going", "--tap", "--junit"}) {
    if (parser.given(name)) throw UsageError(std::string(name) + " is for --scenario only");
  }
}

void applyDefaults(HostOptions& options) {
  if (options.deviceRoot.empty()) options.deviceRoot = options.device.state / "device";
  if (options.controlSocket.empty()) {
    options.controlSocket = controlSocketBeside(options.socket);
  } else if (absolute(options.controlSocket).lexically_normal() ==
             absolute(options.socket).lexically_normal()) {
    throw UsageError("--control-socket must be another file than --socket");
  }
}

void requireConsistent(const OptionParser& parser, const HostOptions& options) {
  if (options.systemClock && options.speed != 1) {
    throw UsageError("--clock system runs at speed 1; leave --speed out");
  }
  if (!options.scenarios.files.empty()) return requireForScenarios(parser, options);
  requireScenarios(parser);
  if (!parser.given("--ready-fd")) return;
  const std::string error = checkReadyDescriptor(options.readyDescriptor);
  if (!error.empty()) throw UsageError("--ready-fd: " + error);
}

}  // namespace

OptionParser hostOptionParser(HostOptions& options) {
  OptionParser parser({"clockhost",
                       "Runs a telephone's clock service on this machine, with a virtual clock.",
                       "", kStatuses});
  addHostOptions(parser, options);
  addDeviceOptions(parser, options.device);
  addScenarioOptions(parser, options.scenarios);
  return parser;
}

std::optional<HostOptions> readHostOptions(std::span<const std::string> words,
                                           const DefaultPaths& defaults, std::ostream& out) {
  HostOptions options;
  options.plugin = defaults.plugin;
  options.standIns = defaults.standIns;
  options.socket = defaults.socket;
  options.device.state = defaults.state;
  OptionParser parser = hostOptionParser(options);
  if (!parser.readToRun(words, out)) return std::nullopt;
  requireConsistent(parser, options);
  applyDefaults(options);
  return options;
}

}  // namespace host
