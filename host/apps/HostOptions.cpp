#include "apps/HostOptions.h"

#include <grp.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "apps/OptionParser.h"
#include "base/DefaultPaths.h"
#include "base/PrintableText.h"
#include "remote/SocketAddress.h"
#include "verbs/CallWords.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

constexpr std::size_t kMacDigits = 12;

// Options whose text is converted after all have been read.
struct RawOptions {
  std::string clock = "virtual";
  std::string speed = "1";
  std::string at;
  std::string network = "down";
  std::vector<std::string> programs;
  std::string socketGroup;
};

// Each check returns what is wrong, empty for nothing.
std::string checkMac(const std::string& text) {
  const bool hex = std::all_of(text.begin(), text.end(),
                               [](unsigned char letter) { return std::isxdigit(letter) != 0; });
  if (hex && text.size() == kMacDigits) return "";
  return "\"" + text + "\" is not 12 hexadecimal digits, as in 0001E3A1B2C3";
}

std::string checkSpeed(const std::string& text) {
  if (parseSpeed(text)) return "";
  return "\"" + text + "\" is not a speed: " + std::string(kSpeedForms);
}

std::string checkInstant(const std::string& text) {
  if (parseInstant(text)) return "";
  return "\"" + text + "\" is not an instant: " + std::string(kInstantForms);
}

std::string checkProgram(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (text.starts_with('/') && equals != std::string::npos && equals + 1 < text.size()) return "";
  return "\"" + text + "\" is not DEVICEPATH=PATH, as in /sbin/ntpclient=./client";
}

std::string checkGroup(const std::string& text) {
  return text.empty() ? "the name is empty; name a group" : "";
}

// The help shows the choices as the option's type, so the check has no description.
CLI::Validator oneOf(std::initializer_list<const char*> choices) {
  return CLI::IsMember(std::vector<std::string>(choices.begin(), choices.end())).description("");
}

void addDeviceOptions(OptionParser& parser, DeviceOptions& device, RawOptions& raw) {
  parser.addPath("--state", device.state, "Folder for settings and security log", "DIR");
  parser
      .add_option("--variant", device.variant,
                  "Hardware sub-variant; 2, 3 and 4 start with other defaults")
      ->type_name("N");
  parser.add_option("--software-type", device.softwareType, "Telephony software")
      ->type_name("TEXT");
  parser.add_option("--mac", device.mac, "MAC address")->type_name("12HEX")->check(checkMac);
  parser.add_option("--network", raw.network, "Network link at start")
      ->type_name("up|down")
      ->check(oneOf({"up", "down"}));
  parser.add_option("--at", raw.at, "Time at start")
      ->type_name("UTC")
      ->default_str("the saved time")
      ->check(checkInstant);
}

void addSocketOptions(OptionParser& parser, HostOptions& options, RawOptions& raw) {
  parser.addPath("--socket", options.socket, "Socket for calls and events");
  parser
      .add_option("--socket-group", raw.socketGroup,
                  "Group whose members may connect to --socket, as its owner may")
      ->type_name("NAME")
      ->check(checkGroup);
  parser
      .addPath("--control-socket", options.controlSocket,
               "Socket for control requests, for its owner only")
      ->default_str("--socket with \".control\" appended");
}

void addHostOptions(OptionParser& parser, HostOptions& options, RawOptions& raw) {
  parser.addPath("--plugin", options.plugin, "Plug-in to load");
  addSocketOptions(parser, options, raw);
  parser
      .addPath("--device-root", options.deviceRoot,
               "Folder for the device's /data and /tmp/votk; / on a real device", "DIR")
      ->default_str("\"device\" in --state");
  parser
      .add_option("--clock", raw.clock,
                  "Clock to run on; system sets this machine's clock and needs the privilege to")
      ->type_name("virtual|system")
      ->check(oneOf({"virtual", "system"}));
  parser
      .add_option("--speed", raw.speed,
                  "Virtual seconds per real second; 0 pauses, max runs as fast as possible")
      ->type_name("X")
      ->check(checkSpeed);
  parser
      .add_option("--log-level", options.logLevel,
                  "Detail of the log, from 0 (fatal errors) to 6 (everything)")
      ->type_name("0..6")
      ->check(CLI::Range(0, 6).description(""));
  parser
      .add_option("--program", raw.programs,
                  "Run PATH for a program of the device instead of its stand-in; may be repeated")
      ->type_name("DEVICEPATH=PATH")
      ->default_str("")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false)
      ->check(checkProgram);
}

std::string checkPath(const std::string& text) {
  return text.empty() ? "the path is empty; name a file or folder" : "";
}

std::string checkJobs(const std::string& text) {
  const std::optional<int> jobs = parseInteger(text);
  if (jobs && *jobs >= 1 && *jobs <= kMostJobs) return "";
  return quotedText(text) + " is not a number of jobs: 1 to " + std::to_string(kMostJobs);
}

void addScenarioOptions(OptionParser& parser, SuiteOptions& options) {
  parser
      .add_option(
          "--scenario", options.files,
          "Run scenarios, or those in a folder, and exit: 0 passed, 1 failed, 2 could not be "
          "read")
      ->type_name("FILE|DIR ...")
      ->default_str("")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->check(checkPath);
  parser.add_option("--jobs", options.jobs, "How many scenarios run at a time")
      ->type_name("N")
      ->check(checkJobs);
  parser.add_flag("--keep-going", options.keepGoing, "Run all scenarios, also after a failure");
  parser.add_flag("--tap", options.tap, "Report the scenarios in the TAP format");
  parser.addPath("--junit", options.junit, "Write a report of the scenarios in the JUnit format")
      ->default_str("");
}

// Options that a scenario would ignore.
void requireForScenarios(const OptionParser& parser, const HostOptions& options) {
  if (options.systemClock) {
    throw UsageError("--scenario runs under a clock of its own; leave --clock system out");
  }
  for (const char* const name : {"--variant", "--software-type", "--mac", "--network", "--at"}) {
    if (parser.count(name) == 0) continue;
    throw UsageError(std::string(name) + " is not for scenarios; write `" + (name + 2) +
                     "` at the beginning of the file");
  }
  for (const char* const name : {"--speed", "--state", "--socket", "--socket-group",
                                 "--control-socket", "--device-root", "--log-level", "--program"}) {
    if (parser.count(name) == 0) continue;
    throw UsageError(std::string(name) + " is not for scenarios; leave it out");
  }
}

void requireScenarios(const OptionParser& parser) {
  for (const char* const name : {"--jobs", "--keep-going", "--tap", "--junit"}) {
    if (parser.count(name) > 0) throw UsageError(std::string(name) + " is for --scenario only");
  }
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

void applySockets(const RawOptions& raw, HostOptions& options) {
  if (options.controlSocket.empty()) {
    options.controlSocket = controlSocketBeside(options.socket);
  } else if (absolute(options.controlSocket).lexically_normal() ==
             absolute(options.socket).lexically_normal()) {
    throw UsageError("--control-socket must be another file than --socket");
  }
  if (!raw.socketGroup.empty()) options.socketGroup = groupNamed(raw.socketGroup);
}

void apply(const RawOptions& raw, HostOptions& options) {
  options.systemClock = raw.clock == "system";
  options.speed = parseSpeed(raw.speed).value_or(1);
  if (options.systemClock && options.speed != 1) {
    throw UsageError("--clock system runs at speed 1; leave --speed out");
  }
  options.device.networkUp = raw.network == "up";
  if (const auto instant = parseInstant(raw.at)) options.device.at = longInstantText(*instant);
  for (const std::string& program : raw.programs) {
    const std::size_t equals = program.find('=');
    options.programs.emplace_back(program.substr(0, equals), program.substr(equals + 1));
  }
  if (options.deviceRoot.empty()) options.deviceRoot = options.device.state / "device";
  applySockets(raw, options);
}

}  // namespace

std::optional<HostOptions> readHostOptions(std::span<const std::string> words,
                                           const DefaultPaths& defaults, std::ostream& out) {
  HostOptions options;
  options.plugin = defaults.plugin;
  options.standIns = defaults.standIns;
  options.socket = defaults.socket;
  options.device.state = defaults.state;
  RawOptions raw;
  OptionParser parser("clockhost",
                      "Runs a telephone's clock service on this machine, with a virtual clock.");
  addHostOptions(parser, options, raw);
  addDeviceOptions(parser, options.device, raw);
  addScenarioOptions(parser, options.scenarios);
  if (!parser.read(words, out)) return std::nullopt;
  apply(raw, options);
  if (options.scenarios.files.empty()) {
    requireScenarios(parser);
  } else {
    requireForScenarios(parser, options);
  }
  return options;
}

}  // namespace host
