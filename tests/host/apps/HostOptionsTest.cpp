#include "apps/HostOptions.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <grp.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <regex>
#include <sstream>

#include "base/DefaultPaths.h"
#include "scenario/ScenarioWords.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

using Words = std::vector<std::string>;
using Paths = std::vector<std::filesystem::path>;

constexpr const char* kUnreadableGroup = "unreadable";  // its lookup fails

const DefaultPaths kDefaults = {"/lib/plugin.so", "/state", "/run/socket", "/bin"};

HostOptions optionsOf(const Words& words) {
  std::ostringstream out;
  const auto options = readHostOptions(words, kDefaults, out);
  EXPECT_TRUE(options.has_value());
  return options.value_or(HostOptions{});
}

std::string usageErrorOf(const Words& words) {
  std::ostringstream out;
  try {
    static_cast<void>(readHostOptions(words, kDefaults, out));
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(HostOptions, HaveDefaults) {
  const HostOptions options = optionsOf({});
  EXPECT_EQ(options.plugin, "/lib/plugin.so");
  EXPECT_EQ(options.socket, "/run/socket");
  EXPECT_EQ(options.controlSocket, "/run/socket.control");
  EXPECT_FALSE(options.socketGroup.has_value());
  EXPECT_EQ(options.device.state, "/state");
  EXPECT_EQ(options.device.variant, 0);
  EXPECT_FALSE(options.device.networkUp);
  EXPECT_FALSE(options.device.at.has_value());
  EXPECT_FALSE(options.systemClock);
  EXPECT_EQ(options.speed, 1);
  EXPECT_EQ(options.logLevel, 4);
  EXPECT_EQ(options.deviceRoot, "/state/device");
  EXPECT_TRUE(options.scenarios.files.empty());
}

TEST(HostOptions, ALongWordIsClipped) {
  const std::string word(1000, 'x');
  for (const Words& words : {Words{"--network", word}, Words{"--" + word}, Words{word}}) {
    const std::string error = usageErrorOf(words);
    EXPECT_NE(error.find("...\" (10"), std::string::npos) << error;
    EXPECT_LT(error.size(), 200U) << error;
  }
}

TEST(HostOptions, PathsAndTextsAreNotEmpty) {
  for (const char* const option : {"--plugin", "--state", "--socket", "--control-socket",
                                   "--device-root", "--scenario", "--junit", "--log-file"}) {
    for (const Words& words : {Words{option, ""}, Words{option + std::string("=")}}) {
      EXPECT_EQ(usageErrorOf(words), option + std::string(": the path is empty; name a file or "
                                                          "folder; `clockhost --help` lists the "
                                                          "options"));
    }
  }
  for (const char* const program : {"/sbin/ntpclient=", "=/bin/true", "="}) {
    EXPECT_NE(usageErrorOf({"--program", program}).find("is not DEVICEPATH=PATH"),
              std::string::npos);
  }
  EXPECT_EQ(usageErrorOf({"--software-type", ""}),
            "--software-type: the text is empty; leave the option out for none; `clockhost --help` "
            "lists the options");
  EXPECT_EQ(
      usageErrorOf({"--socket-group", ""}),
      "--socket-group: the name is empty; name a group; `clockhost --help` lists the options");
}

TEST(HostOptions, AGroupThatCannotBeLookedUpIsNotMissing) {
  EXPECT_EQ(usageErrorOf({"--socket-group", kUnreadableGroup}),
            "--socket-group: the group \"unreadable\" cannot be looked up: " +
                std::string(std::strerror(EIO)));
}

TEST(HostOptions, AllCanBeGiven) {
  const HostOptions options = optionsOf(splitScenarioLine(
      "--plugin p.so --state s --socket k --control-socket c --socket-group root --device-root r "
      "--variant 3 --clock virtual --speed 60 --at 2026-03-08T06:59:50Z "
      "--software-type \"Velmora QEX\" --mac 0001E3A1B2C3 --network up --log-level 6 "
      "--program /sbin/ntpclient=./client --program /sbin/a=b=c"));
  EXPECT_EQ(options.plugin, "p.so");
  EXPECT_EQ(options.socket, "k");
  EXPECT_EQ(options.controlSocket, "c");
  EXPECT_EQ(options.socketGroup, gid_t{0});
  EXPECT_EQ(options.deviceRoot, "r");
  EXPECT_EQ(options.speed, 60);
  EXPECT_EQ(options.logLevel, 6);
  ASSERT_EQ(options.programs.size(), 2U);
  EXPECT_EQ(options.programs[0],
            (std::pair<std::string, std::string>("/sbin/ntpclient", "./client")));
  EXPECT_EQ(options.programs[1], (std::pair<std::string, std::string>("/sbin/a", "b=c")));
  EXPECT_EQ(options.device.state, "s");
  EXPECT_EQ(options.device.variant, 3);
  EXPECT_EQ(options.device.at, "2026-03-08T06:59:50+00:00");
  EXPECT_EQ(options.device.softwareType, "Velmora QEX");
  EXPECT_EQ(options.device.mac, "0001E3A1B2C3");
  EXPECT_TRUE(options.device.networkUp);
}

TEST(HostOptions, DeviceRootIsInTheStateFolder) {
  EXPECT_EQ(optionsOf({"--state", "s"}).deviceRoot, "s/device");
  EXPECT_EQ(optionsOf({"--state", "s", "--device-root", "/"}).deviceRoot, "/");
}

TEST(HostOptions, TheLastOfTwoCounts) {
  EXPECT_EQ(optionsOf({"--variant", "3", "--variant", "2"}).device.variant, 2);
  EXPECT_EQ(optionsOf({"--socket", "a", "--socket", "b"}).socket, "b");
  EXPECT_EQ(optionsOf({"--socket", "a", "--socket", "b"}).controlSocket, "b.control");
}

TEST(HostOptions, InstantMayHaveAnOffset) {
  EXPECT_EQ(optionsOf({"--at", "2026-03-08T01:59:50-05:00"}).device.at,
            "2026-03-08T06:59:50+00:00");
}

TEST(HostOptions, SpeedZeroIsPausedAndMaxIsInfinite) {
  EXPECT_EQ(optionsOf({"--speed", "0"}).speed, 0);
  EXPECT_TRUE(std::isinf(optionsOf({"--speed", "max"}).speed));
}

TEST(HostOptions, SystemClockHasNoSpeed) {
  EXPECT_TRUE(optionsOf({"--clock", "system"}).systemClock);
  EXPECT_NE(usageErrorOf({"--clock", "system", "--speed", "2"}), "");
}

TEST(HostOptions, ScenarioNeverRunsUnderTheSystemClock) {
  EXPECT_EQ(usageErrorOf({"--clock", "system", "--scenario", "a"}),
            "--scenario runs under a clock of its own; leave --clock system out");
  EXPECT_EQ(optionsOf({"--clock", "virtual", "--scenario", "a"}).scenarios.files, Paths{"a"});
}

TEST(HostOptions, ManyScenariosCanBeGiven) {
  const SuiteOptions alone = optionsOf({"--scenario", "a"}).scenarios;
  EXPECT_EQ(alone.jobs, 1);
  EXPECT_FALSE(alone.keepGoing || alone.tap);
  EXPECT_EQ(alone.junit, "");
  const SuiteOptions all = optionsOf({"--scenario", "a", "b", "--jobs", "256", "--keep-going",
                                      "--tap", "--junit", "j", "--scenario", "c"})
                               .scenarios;
  EXPECT_EQ(all.files, (Paths{"a", "b", "c"}));
  EXPECT_EQ(all.jobs, kMostJobs);
  EXPECT_TRUE(all.keepGoing && all.tap);
  EXPECT_EQ(all.junit, "j");
}

TEST(HostOptions, ThatAScenarioWouldIgnoreAreRefused) {
  const Words ignored[] = {
      {"--variant", "3"},         {"--software-type", "x"}, {"--network", "up"},
      {"--mac", "0001E3A1B2C3"},  {"--speed", "0"},         {"--at", "2026-03-08T06:59:50Z"},
      {"--state", "s"},           {"--socket", "s"},        {"--control-socket", "s"},
      {"--socket-group", "root"}, {"--device-root", "r"},   {"--log-level", "6"},
      {"--log-file", "l"},        {"--program", "/a=b"}};
  for (Words words : ignored) {
    const std::string option = words.front();
    words.insert(words.end(), {"--scenario", "a"});
    EXPECT_EQ(usageErrorOf(words).find(option + " is not for scenarios; "), 0U) << option;
  }
  EXPECT_EQ(usageErrorOf({"--scenario", "a", "--at", "2026-03-08T06:59:50Z"}),
            "--at is not for scenarios; write `at` at the beginning of the file");
}

std::string outputOf(const char* option) {
  std::ostringstream out;
  EXPECT_FALSE(readHostOptions(Words{option}, kDefaults, out).has_value());
  return out.str();
}

TEST(HostOptions, VersionIsPrintedAlone) {
  EXPECT_TRUE(std::regex_match(outputOf("--version"), std::regex("[0-9]+\\.[0-9]+\\.[0-9]+\n")));
}

TEST(HostOptions, HelpNamesEachOptionWithItsDefault) {
  const std::string help = outputOf("--help");
  const std::pair<const char*, const char*> rows[] = {
      {"-h, --help", "and exit"},
      {"--version", "and exit"},
      {"--plugin FILE", "(default: /lib/plugin.so)"},
      {"--socket FILE", "(default: /run/socket)"},
      {"--socket-group NAME", "owner may"},
      {"--control-socket FILE", "(default: --socket with \".control\" appended)"},
      {"--device-root DIR", "(default: \"device\" in --state)"},
      {"--clock virtual|system", "(default: virtual)"},
      {"--speed X", "(default: 1)"},
      {"--log-level 0..6", "(default: 4)"},
      {"--log-file FILE", "(default: standard error)"},
      {"--ready-fd N", "the host answers"},
      {"--program DEVICEPATH=PATH", "may be repeated"},
      {"--scenario FILE|DIR ...", "could not be read"},
      {"--jobs N", "(default: 1)"},
      {"--keep-going", "after a failure"},
      {"--tap", "TAP format"},
      {"--junit FILE", "JUnit format"},
      {"--state DIR", "(default: /state)"},
      {"--variant N", "(default: 0)"},
      {"--software-type TEXT", "software"},
      {"--mac 12HEX", "address"},
      {"--network up|down", "(default: down)"},
      {"--at UTC", "(default: the saved time)"},
  };
  for (const auto& [option, end] : rows) {
    const std::size_t at = help.find("\n  " + std::string(option));
    ASSERT_NE(at, std::string::npos) << option << '\n' << help;
    EXPECT_EQ(help.find(std::string(end) + '\n', at), help.find('\n', at + 1) - std::strlen(end))
        << option << '\n'
        << help;
  }
}

}  // namespace
}  // namespace host

// Comes before the C library's.
extern "C" group* getgrnam(const char* name) {
  if (std::strcmp(name, host::kUnreadableGroup) == 0) {
    errno = EIO;
    return nullptr;
  }
  static const auto real = reinterpret_cast<decltype(&::getgrnam)>(::dlsym(RTLD_NEXT, "getgrnam"));
  return real(name);
}
