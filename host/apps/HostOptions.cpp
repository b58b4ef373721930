#include "apps/HostOptions.h"

#include <grp.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ostream>

#include "base/DefaultPaths.h"
#include "base/PrintableText.h"
#include "remote/SocketAddress.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

constexpr const char* kDescription =
    "Runs a telephone's clock service on this machine, under a clock of its own.";
constexpr std::size_t kMacDigits = 12;
constexpr std::size_t kLongestComplaint =
    300;  // bytes of the library's words, which echo the person's

// Of the system's entry of a group, which names each member: a million members fit.
constexpr std::size_t kRoomForGroup = std::size_t{16} * 1024;         // bytes, at first
constexpr std::size_t kLongestGroup = std::size_t{16} * 1024 * 1024;  // bytes

// What the words say, before it is understood.
struct Words {
  std::string clock = "virtual";
  std::string speed = "1";
  std::string at;
  std::string network = "down";
  std::vector<std::string> programs;
  std::string scenario;
  std::string socketGroup;
};

// CLI11 takes an empty text for "right", and puts the option's name before any other.
std::string checkMac(const std::string& text) {
  const bool hex = std::all_of(text.begin(), text.end(),
                               [](unsigned char letter) { return std::isxdigit(letter) != 0; });
  return hex && text.size() == kMacDigits ? ""
                                          : "\"" + text +
                                                "\" is not 12 hexadecimal digits, as in "
                                                "0001E3A1B2C3";
}

std::string checkSpeed(const std::string& text) {
  return parseSpeed(text) ? "" : "\"" + text + "\" is not a speed: " + std::string(kSpeedForms);
}

std::string checkInstant(const std::string& text) {
  return parseInstant(text) ? ""
                            : "\"" + text + "\" is not an instant: " + std::string(kInstantForms);
}

std::string checkProgram(const std::string& text) {
  const std::size_t equals = text.find('=');
  const bool right =
      text.substr(0, 1) == "/" && equals != std::string::npos && equals + 1 < text.size();
  return right ? "" : "\"" + text + "\" is not DEVICEPATH=PATH, as in /sbin/ntpclient=./client";
}

// Left out, each path has its default.
std::string checkPath(const std::string& text) {
  return text.empty() ? "a path is wanted, not an empty text" : "";
}

std::string checkGroup(const std::string& text) {
  return text.empty() ? "a group is wanted, not an empty text" : "";
}

void addDeviceOptions(CLI::App& app, DeviceOptions& device, Words& words) {
  app.add_option("--state", device.state, "Folder of the saved settings")
      ->type_name("DIR")
      ->check(checkPath);
  app.add_option("--variant", device.variant, "Hardware sub-variant; 2, 3 and 4 form one class")
      ->type_name("N");
  app.add_option("--software-type", device.softwareType, "Telephony software of the telephone")
      ->type_name("TEXT");
  app.add_option("--mac", device.mac, "MAC address")->type_name("12HEX")->check(checkMac);
  app.add_option("--network", words.network, "Network link at the start")
      ->type_name("up|down")
      ->check(CLI::IsMember({"up", "down"}));
  app.add_option("--at", words.at, "Saved fallback time: where the clock starts")
      ->type_name("UTC")
      ->check(checkInstant);
}

void addHostOptions(CLI::App& app, HostOptions& options, Words& words) {
  app.add_option("--plugin", options.plugin, "The plug-in")->type_name("FILE")->check(checkPath);
  app.add_option("--socket", options.socket, "Where remote calls come in")
      ->type_name("FILE")
      ->check(checkPath);
  app.add_option("--socket-group", words.socketGroup, "A group that may call, beside the owner")
      ->type_name("NAME")
      ->check(checkGroup);
  app.add_option("--control-socket", options.controlSocket,
                 "Where the owner's control requests come in; beside --socket, with \".control\" "
                 "behind")
      ->type_name("FILE")
      ->check(checkPath);
  app.add_option(
         "--device-root", options.deviceRoot,
         "Folder for the device's /data and /tmp/votk: \"device\" in --state; / on a device")
      ->type_name("DIR")
      ->check(checkPath);
  app.add_option("--clock", words.clock, "A clock of its own, or (privileged) the machine's")
      ->type_name("virtual|system")
      ->check(CLI::IsMember({"virtual", "system"}));
  app.add_option("--speed", words.speed,
                 "Virtual seconds for each real one; 0 pauses, max is as fast as it goes")
      ->type_name("X")
      ->check(checkSpeed);
  app.add_option("--log-level", options.logLevel, "From 0, fatal only, to 6, everything")
      ->type_name("0..6")
      ->check(CLI::Range(0, 6));
  app.add_option("--program", words.programs,
                 "What runs for a device program instead of its stand-in")
      ->type_name("DEVICEPATH=PATH")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false)
      ->check(checkProgram);
  app.add_option("--scenario", words.scenario, "Run a scenario and end: 0 passed, 1 failed")
      ->type_name("FILE")
      ->check(checkPath);
}

// A name that is not found is no failure, whatever the system says then.
bool isFailure(int error) {
  constexpr std::array kFailures = {EINTR, EIO, EMFILE, ENFILE, ENOMEM, ERANGE};
  return std::find(kFailures.begin(), kFailures.end(), error) != kFailures.end();
}

std::string reasonOf(int error) {
  if (error != ERANGE) return std::strerror(error);
  return "its entry is longer than " + std::to_string(kLongestGroup >> 20U) + " MiB";
}

gid_t groupNamed(const std::string& name) {
  group entry{};
  group* found = nullptr;
  int error = ERANGE;
  for (std::size_t room = kRoomForGroup; error == ERANGE && room <= kLongestGroup; room *= 2) {
    std::vector<char> strings(room);
    error = getgrnam_r(name.c_str(), &entry, strings.data(), strings.size(), &found);
  }
  if (found != nullptr) return entry.gr_gid;
  throw UsageError("--socket-group: " + (isFailure(error)
                                             ? "the group " + quotedText(name) +
                                                   " cannot be looked up: " + reasonOf(error)
                                             : "there is no group " + quotedText(name) + " here"));
}

void understandSockets(const Words& words, HostOptions& options) {
  if (options.controlSocket.empty()) options.controlSocket = controlSocketBeside(options.socket);
  if (absolute(options.controlSocket).lexically_normal() ==
      absolute(options.socket).lexically_normal()) {
    throw UsageError("--control-socket must be another file than --socket");
  }
  if (!words.socketGroup.empty()) options.socketGroup = groupNamed(words.socketGroup);
}

void understand(const Words& words, HostOptions& options) {
  options.systemClock = words.clock == "system";
  options.speed = parseSpeed(words.speed).value_or(1);
  if (options.systemClock && options.speed != 1) {
    throw UsageError("--clock system runs at speed 1; leave --speed out");
  }
  options.device.networkUp = words.network == "up";
  if (const auto instant = parseInstant(words.at)) options.device.at = longInstantText(*instant);
  for (const std::string& program : words.programs) {
    const std::size_t equals = program.find('=');
    options.programs.emplace_back(program.substr(0, equals), program.substr(equals + 1));
  }
  if (options.deviceRoot.empty()) options.deviceRoot = options.device.state / "device";
  understandSockets(words, options);
  if (words.scenario.empty()) return;
  if (options.systemClock) {
    throw UsageError("--scenario runs under a clock of its own; leave --clock system out");
  }
  options.scenario = words.scenario;
}

}  // namespace

std::optional<HostOptions> readHostOptions(std::span<const std::string> words,
                                           const DefaultPaths& defaults, std::ostream& out) {
  HostOptions options;
  options.plugin = defaults.plugin;
  options.socket = defaults.socket;
  options.device.state = defaults.state;
  Words texts;
  CLI::App app(kDescription, "clockhost");
  app.set_version_flag("--version", CLOCK_VERSION);
  // The last of two counts, so that a script's options can be overridden.
  app.option_defaults()->always_capture_default()->multi_option_policy(
      CLI::MultiOptionPolicy::TakeLast);
  addHostOptions(app, options, texts);
  addDeviceOptions(app, options.device, texts);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::Success& asked) {
    app.exit(asked, out, out);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw UsageError(clippedText(error.what(), kLongestComplaint) + "; see clockhost --help");
  }
  understand(texts, options);
  return options;
}

}  // namespace host
