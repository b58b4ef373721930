#include "apps/HostOptions.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <grp.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <sstream>

#include "base/DefaultPaths.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

using Words = std::vector<std::string>;

// While it lives, there is a group whose entry takes this many bytes.
class CrowdedGroup {
 public:
  static constexpr const char* kName = "crowded";
  static constexpr gid_t kId = 4711;

  explicit CrowdedGroup(std::size_t size) { s_size = size; }
  ~CrowdedGroup() { s_size = 0; }
  CrowdedGroup(const CrowdedGroup&) = delete;
  CrowdedGroup& operator=(const CrowdedGroup&) = delete;

  static int lookUp(group* entry, std::size_t room, group** found) {
    *found = nullptr;
    if (s_size == 0) return 0;
    if (room < s_size) return ERANGE;
    entry->gr_gid = kId;
    *found = entry;
    return 0;
  }

 private:
  static inline std::size_t s_size = 0;  // 0: there is none
};

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

TEST(HostOptions, NothingNeedsToBeSaid) {
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
  EXPECT_FALSE(options.scenario.has_value());
}

TEST(HostOptions, ALongComplaintIsClipped) {
  const std::string error = usageErrorOf({"--network", std::string(1000, 'x')});
  EXPECT_EQ(error.find("... ("), 300U) << error;
}

TEST(HostOptions, APathIsNotEmpty) {
  for (const char* const option :
       {"--plugin", "--state", "--socket", "--control-socket", "--device-root", "--scenario"}) {
    EXPECT_EQ(usageErrorOf({option, ""}),
              option + std::string(": a path is wanted, not an empty text; see clockhost --help"));
  }
  for (const char* const program : {"/sbin/ntpclient=", "=/bin/true", "="}) {
    EXPECT_NE(usageErrorOf({"--program", program}).find("is not DEVICEPATH=PATH"),
              std::string::npos);
  }
}

TEST(HostOptions, AGroupIsNotEmpty) {
  EXPECT_EQ(usageErrorOf({"--socket-group", ""}),
            "--socket-group: a group is wanted, not an empty text; see clockhost --help");
}

TEST(HostOptions, AGroupMayHaveAnyNumberOfMembers) {
  for (const std::size_t size : {std::size_t{1} << 10U, std::size_t{1} << 20U}) {
    const CrowdedGroup crowded(size);
    EXPECT_EQ(optionsOf({"--socket-group", CrowdedGroup::kName}).socketGroup, CrowdedGroup::kId);
  }
}

TEST(HostOptions, AGroupThatCannotBeLookedUpIsNotMissing) {
  const CrowdedGroup crowded(SIZE_MAX);
  EXPECT_EQ(usageErrorOf({"--socket-group", CrowdedGroup::kName}),
            "--socket-group: the group \"crowded\" cannot be looked up: its entry is longer than "
            "16 MiB");
}

TEST(HostOptions, EverythingCanBeSaid) {
  const HostOptions options = optionsOf({"--plugin",
                                         "p.so",
                                         "--state",
                                         "s",
                                         "--socket",
                                         "k",
                                         "--control-socket",
                                         "c",
                                         "--socket-group",
                                         "root",
                                         "--device-root",
                                         "r",
                                         "--variant",
                                         "3",
                                         "--clock",
                                         "virtual",
                                         "--speed",
                                         "60",
                                         "--at",
                                         "2026-03-08T06:59:50Z",
                                         "--software-type",
                                         "Velmora QEX",
                                         "--mac",
                                         "0001E3A1B2C3",
                                         "--network",
                                         "up",
                                         "--log-level",
                                         "6",
                                         "--program",
                                         "/sbin/ntpclient=./client",
                                         "--program",
                                         "/sbin/a=b=c",
                                         "--scenario",
                                         "f"});
  EXPECT_EQ(options.plugin, "p.so");
  EXPECT_EQ(options.socket, "k");
  EXPECT_EQ(options.controlSocket, "c");
  EXPECT_EQ(options.socketGroup, gid_t{0});
  EXPECT_EQ(options.deviceRoot, "r");
  EXPECT_EQ(options.speed, 60);
  EXPECT_EQ(options.logLevel, 6);
  EXPECT_EQ(options.scenario, "f");
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

TEST(HostOptions, DeviceRootGoesWithTheState) {
  EXPECT_EQ(optionsOf({"--state", "s"}).deviceRoot, "s/device");
  EXPECT_EQ(optionsOf({"--state", "s", "--device-root", "/"}).deviceRoot, "/");
}

TEST(HostOptions, LastOfTwoCounts) {
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

TEST(HostOptions, SystemClockIsAsFastAsItIs) {
  EXPECT_TRUE(optionsOf({"--clock", "system"}).systemClock);
  EXPECT_NE(usageErrorOf({"--clock", "system", "--speed", "2"}), "");
}

TEST(HostOptions, ScenarioNeverRunsUnderTheSystemClock) {
  EXPECT_EQ(usageErrorOf({"--clock", "system", "--scenario", "a"}),
            "--scenario runs under a clock of its own; leave --clock system out");
  EXPECT_EQ(optionsOf({"--clock", "virtual", "--scenario", "a"}).scenario, "a");
}

TEST(HostOptions, HelpAndVersionAreForPeople) {
  for (const char* const word : {"--help", "--version"}) {
    std::ostringstream out;
    EXPECT_FALSE(readHostOptions(Words{word}, kDefaults, out).has_value());
    EXPECT_FALSE(out.str().empty());
  }
}

TEST(HostOptions, HelpNamesEachOptionWithItsDefault) {
  std::ostringstream out;
  EXPECT_FALSE(readHostOptions(Words{"--help"}, kDefaults, out).has_value());
  const std::string help = out.str();
  for (const char* const option :
       {"-h,--help ", "--version ", "--plugin FILE=/lib/plugin.so\n", "--socket FILE=/run/socket ",
        "--socket-group NAME ", "--control-socket FILE ", "--device-root DIR ",
        "--clock virtual|system:{virtual,system}=virtual\n", "--speed X=1 ",
        "--log-level 0..6:INT in [0 - 6]=4\n", "--program DEVICEPATH=PATH=[] ...\n",
        "--scenario FILE ", "--state DIR=/state ", "--variant N=0 ", "--software-type TEXT ",
        "--mac 12HEX ", "--network up|down:{up,down}=down\n", "--at UTC "}) {
    EXPECT_NE(help.find("\n  " + std::string(option)), std::string::npos) << option << '\n' << help;
  }
}

struct Wrong {
  Words words;
  const char* named;  // part of the error
};

TEST(HostOptions, WrongWordsAreNamedInOneLine) {
  const Wrong table[] = {{{"--no-such-option"}, "--no-such-option"},
                         {{"word"}, "word"},
                         {{"--variant", "three"}, "--variant"},
                         {{"--variant"}, "--variant"},
                         {{"--log-level", "7"}, "--log-level"},
                         {{"--log-level", "-1"}, "--log-level"},
                         {{"--clock", "real"}, "--clock"},
                         {{"--speed", "-1"}, "`max`"},
                         {{"--speed", "fast"}, "`max`"},
                         {{"--at", "yesterday"}, "2026-03-08T06:59:50Z"},
                         {{"--at", ""}, "2026-03-08T06:59:50Z"},
                         {{"--network", "sideways"}, "--network"},
                         {{"--mac", "00:01:E3:A1:B2:C3"}, "12 hexadecimal digits"},
                         {{"--mac", "0001E3A1B2C"}, "12 hexadecimal digits"},
                         {{"--mac", "0001E3A1B2CG"}, "12 hexadecimal digits"},
                         {{"--socket", "a", "--control-socket", "./a"}, "another file than"},
                         {{"--socket-group", "no such group"}, "no group \"no such group\""},
                         {{"--program", "/sbin/ntpclient"}, "DEVICEPATH=PATH"},
                         {{"--program", "ntpclient=x"}, "DEVICEPATH=PATH"},
                         {{"--program", "/sbin/ntpclient="}, "DEVICEPATH=PATH"}};
  for (const Wrong& wrong : table) {
    const std::string error = usageErrorOf(wrong.words);
    EXPECT_NE(error.find(wrong.named), std::string::npos) << wrong.words[0] << ": " << error;
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  }
}

}  // namespace
}  // namespace host

// Found before the C library's, to which other names go on.
extern "C" int getgrnam_r(const char* name, group* entry, char* strings, std::size_t size,
                          group** found) {
  if (std::strcmp(name, host::CrowdedGroup::kName) == 0) {
    return host::CrowdedGroup::lookUp(entry, size, found);
  }
  static const auto real =
      reinterpret_cast<decltype(&::getgrnam_r)>(::dlsym(RTLD_NEXT, "getgrnam_r"));
  return real(name, entry, strings, size, found);
}
