#!/usr/bin/env python3
"""planted.py BUILD [STEPS]: prints after how many steps the simulation finds each planted bug.

BUILD is a build folder in which the target "simulate" is built. Each bug changes one line in a copy
of a source of the plug-in, which is compiled and linked with the other objects. The simulation runs seeds
from 1 on, 2500 steps each, until a difference or STEPS (default: 100000) in all. The tree is not changed.
"""

import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
STEPS_OF_A_RUN = 2500
CLOCK = "ClockService/"

# Name, source in src/, the text that changes, and its replacement. If the text occurs several times,
# its last occurrence changes.
BUGS = (
    ("wrong sign in TZ", CLOCK + "TimeZoneText.cpp", "utcOffset) * -60.0", "utcOffset) * 60.0"),
    ("event sent twice", CLOCK + "Notifications.cpp",
     "observer->timeChangeEvent(hours, minutes, seconds);",
     "for (int i = 0; i < 2; ++i) observer->timeChangeEvent(hours, minutes, seconds);"),
    ("year off by one", CLOCK + "TimeQueries.cpp",
     "year = local.tm_year + kEpochYearOfTm", "year = local.tm_year + 1901"),
    ("fallback time not stored", CLOCK + "ClockSetting.cpp",
     "m_dataHandler->setFallbackTime(now);", "return now;"),
    ("timer not replaced", CLOCK + "Notifications.cpp", "dropTimer(m_timeSyncTimer);", ""),
    ("report of 0 passed on", "SNTPTimeChangeObserver.cpp", "secondsSinceEpoch != 0", "true"),
    ("wrong default on variant 3", "ClockServiceDataHandler.cpp", "- 2U <= 2U", "- 2U <= 0U"),
    ("observers called without the lock", CLOCK + "Notifications.cpp",
     "const SemaphoreGuard guard(m_observerLock);", ""),
    ("midnight keeps the seconds", CLOCK + "BoundaryDelay.cpp", "local.tm_sec = 0;", ""),
    ("hour recomputes the daylight flag", CLOCK + "BoundaryDelay.cpp",
     "local.tm_hour += 1;", "local.tm_hour += 1, local.tm_isdst = -1;"),
    ("setDate drops the daylight flag", CLOCK + "ClockSetting.cpp",
     "local.tm_mon = saturatedSum(month, -1);",
     "local.tm_mon = saturatedSum(month, -1), local.tm_isdst = -1;"),
    ("setTime starts from the system's clock", CLOCK + "ClockSetting.cpp",
     "tm local = localTime(getTimeValInternal());", "tm local = localTime(time(nullptr));"),
    ("display value of the system's clock", CLOCK + "TimeQueries.cpp",
     "tm local = localTime(getTimeValInternal());\n  return",
     "tm local = localTime(time(nullptr));\n  return"),
    ("script before the announcement", CLOCK + "TimeZone.cpp",
     "notifyTimezoneChangeEvent(zone.tz.data());",
     "writeTZEnvironmentScript(zone.tz.data()), notifyTimezoneChangeEvent(zone.tz.data());"),
    ("TZ of the environment kept", CLOCK + "TimeZone.cpp",
     'setenv("TZ", tz, 1)', 'setenv("TZ", tz, 0)'),
    ("zone of the start not installed", CLOCK + "ClockService.cpp",
     "  setTZValue();", '  if (!getenv("TZ") || !*getenv("TZ")) setTZValue();'),
    ("network up by its first letters", CLOCK + "NtpClient.cpp",
     'm_networkUp = status == "up"', 'm_networkUp = status.compare(0, 2, "up") == 0'),
    ("fallback time of the clock set by hand", CLOCK + "ClockSetting.cpp",
     "const time_t now = time(nullptr);", "const time_t now = getTimeValInternal();"),
    ("removal takes later observers along", CLOCK + "ClockService.cpp",
     "m_observers->erase(entry)", "m_observers->erase(entry, m_observers->end())"),
    ("reload keeps the time format", "ClockServiceDataHandler.cpp",
     "timeFormat = getDefaultTimeFormat();", ""),
    ("unchanged server stored again", "ClockServiceDataHandler.cpp", "value == sntpAddr || ", ""),
    ("refused number kept in memory", "ClockServiceDataHandler.cpp",
     "if (!storage.setDataItem(key, value)) return false;\n  member = ClientUtils::stoi(value);",
     "member = ClientUtils::stoi(value);\n  if (!storage.setDataItem(key, value)) return false;"),
    ("12.5 hours taken as seconds", "ClockServiceDataHandler.cpp",
     "offset > kFurthestHours", "offset >= kFurthestHours"),
    ("noon is am", CLOCK + "DisplayText.cpp", "hours < kNoon", "hours <= kNoon"),
    ("negative year not of this century", CLOCK + "ClockSetting.cpp",
     "year <= kLastShortYear)", "year <= kLastShortYear && year >= 0)"),
    ("jack without its status", CLOCK + "NtpClient.cpp",
     " && status == PhysDefs::plugInserted", ""),
    ("client restart after each set time", CLOCK + "Notifications.cpp",
     "if (expiredTimer == hourlyTimer) setRestartNTPClientTimer();", "setRestartNTPClientTimer();"),
    ("seconds set leave the NTP flag", CLOCK + "ClockSetting.cpp",
     "m_sntpTimeReceived = false;", ""),
    ("date announced with each hour", CLOCK + "Notifications.cpp",
     "announceDate(Announce::whenNew)", "announceDate(Announce::always)"),
    ("date of the start not known", CLOCK + "ClockService.cpp",
     "m_announcedDate = BoundaryDelay::localDay(started);", "static_cast<void>(started);"),
    ("setTimeInt reads another name", "RemoteMethods.cpp",
     'readNumber(call, "setTime",', 'readNumber(call, "setTimeInt",'),
    ("start-up record under another key", CLOCK + "ClockSetting.cpp",
     "record.populate(ManagementKeyNames::kLastRestartDate,",
     "record.populate(ManagementKeyNames::kTime,"),
    ("UTC text recomputes the daylight flag", CLOCK + "TimeQueries.cpp",
     "  mktime(&local);", "  local.tm_isdst = -1, mktime(&local);"),
    ("zone text of zone 0 in automatic", CLOCK + "TimeZoneText.cpp",
     "settings.automatic && !settings.rule.empty()", "settings.automatic"),
)


def commands_of(build):
    """The command that compiles each source of "simulate", and the one that links it."""
    lines = subprocess.run(["ninja", "-C", build, "-t", "commands", "simulate"], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    compiles = {line.rsplit(" -c ", 1)[1]: line for line in lines if " -c " in line}
    return compiles, lines[-1]


def program_with(build, folder, source, changed):
    """Builds simulate in `folder`, with the text `changed` in place of the source."""
    compiles, link = commands_of(build)
    place = TREE / "src" / source
    copy = folder / place.name
    copy.write_text(changed)
    line = compiles[str(place)]
    made = re.search(r" -o (\S+) -c ", line).group(1)
    line = re.sub(r" -M[FT] \S+| -MD| -Werror", "", line)
    line = line.replace(f" -o {made} -c {place}",
                        f" -iquote {place.parent} -o {folder}/changed.o -c {copy}")
    link = link.replace(f" {made} ", f" {folder}/changed.o ")
    link = link.replace("-o bin/simulate", f"-o {folder}/simulate")
    for command in (line, link):
        subprocess.run(command, shell=True, cwd=build, check=True, capture_output=True)
    return folder / "simulate"


def steps_until_found(program, most):
    for run in range(most // STEPS_OF_A_RUN):
        words = ["--seed", str(run + 1), "--steps", str(STEPS_OF_A_RUN), "--runs", "1"]
        done = subprocess.Popen([program, *words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                text=True)
        for line in done.stdout:
            found = re.search(r"seed \d+, step (\d+)", line)
            if found:
                done.terminate()
                done.wait()
                return run * STEPS_OF_A_RUN + int(found.group(1))
        done.wait()
    return None


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    build, most = Path(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else 100000
    missed = 0
    for name, source, before, after in BUGS:
        text = (TREE / "src" / source).read_text()
        if before not in text:
            sys.exit(f'planted: "{before}" is not in src/{source}')
        at = text.rindex(before)
        changed = text[:at] + after + text[at + len(before):]
        with tempfile.TemporaryDirectory() as folder:
            steps = steps_until_found(program_with(build, Path(folder), source, changed), most)
        missed += steps is None
        print(f"{name:40} {'not found' if steps is None else steps:>10}", flush=True)
    print(f"{len(BUGS) - missed} of {len(BUGS)} found")


if __name__ == "__main__":
    main()
