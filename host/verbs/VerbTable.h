#pragma once

#include <algorithm>
#include <iterator>

#include "verbs/NamedRows.h"
#include "verbs/Verb.h"
#include "verbs/VerbPrinters.h"
#include "verbs/VerbWords.h"

// The whole command line of clockctl, and the verbs of a scenario, in the order of the help.
// operator/HostActions.cpp has the function that the host calls for each verb and action of the
// routes control and stream.
namespace host {

inline constexpr VerbWord kKey{"KEY", "key", readText};
inline constexpr VerbWord kValue{"VALUE", "value", readText};

inline constexpr VerbAction kClockActions[] = {
    {"show", "show the clock's state, as `clock` alone does"},
    {"speed", "change the clock's speed", {VerbWord{"X", "speed", readSpeed}}},
    {"pause", "stop the clock; `clock speed 1` ends the pause"},
    {"advance",
     "let time pass; each timer expires at its own instant",
     {VerbWord{"DURATION", nullptr, readAdvance}},
     true},
    {"next", "let time pass up to the next timer"},
    {"jump",
     "set the wall clock, but not uptime and timers",
     {VerbWord{"UTC|local TIME", nullptr, readInstantOrLocal}}},
    {"to",
     "go to ten seconds before the landmark, and pause",
     {VerbWord{"hour|midnight|dst|leap-day|2038", "landmark", readChoice}},
     true},
};

inline constexpr VerbAction kInjectActions[] = {
    {"jack",
     "raise a plug event; `jack 5 1`: the network plug went in",
     {VerbWord{"PLUG", "plug", readInteger}, VerbWord{"STATUS", "status", readInteger}}},
    {"network", "change the state of the network link", {VerbWord{"up|down", "value", readChoice}}},
    {"dhcp", "change the device value dhcp-enabled", {kValue}},
    {"mobility", "change the device value mobility-user-data-update", {kValue}},
    {"user-data",
     "change whether KEY counts as the user's own, for `reset`",
     {kKey, VerbWord{"on|off", "value", readChoice}}},
    {"value", "change any device value", {kKey, VerbWord{"TEXT", "value", readText}}},
};

inline constexpr Verb kVerbs[] = {
    {"call",
     "call a method of the service; NAME:int=VALUE or NAME:string=VALUE sets the type",
     printCall,
     {VerbWord{"METHOD", "method", readText},
      VerbWord{"[NAME=VALUE ...]", "arguments", readArguments}},
     Verb::Route::call},
    {"get", "read a management value", printValue, {kKey}},
    {"set",
     "write a management value; `time` takes UTC or `local TIME`, in the years 1970-2037",
     printNothing,
     {VerbWord{"KEY VALUE", nullptr, readSetting}}},
    {"reset", "restore the device's default date and time formats", printNothing},
    {"keys",
     "list the management keys and their values, or tell what one accepts",
     printKeys,
     {VerbWord{"[KEY]", "key", readOptionalText}}},
    {"methods",
     "list the methods of the service, or tell what one does and takes",
     printMethods,
     {VerbWord{"[METHOD]", "name", readOptionalText}},
     Verb::Route::catalogue},
    {"events",
     "list the events of the service, or tell when one is raised",
     printEvents,
     {VerbWord{"[EVENT]", "name", readOptionalText}},
     Verb::Route::catalogue},
    {"watch",
     "print the service's events as they arrive, or those with these names and values",
     printEvent,
     {VerbWord{"[EVENT ...] [--where NAME=VALUE]... [--count N] [--for DURATION]", nullptr,
               readWatch}},
     Verb::Route::watch},
    {"wait",
     "wait for one of these events, and print it",
     printEvent,
     {VerbWord{"EVENT ... [--where NAME=VALUE]... [--for DURATION]", nullptr, readWait}},
     Verb::Route::watch},
    {"wait-host",
     "wait until the host answers, up to 30 s or that long",
     printNothing,
     {VerbWord{"[DURATION]", nullptr, readHostLimit}},
     Verb::Route::host},
    {"clock",
     "show or control the clock",
     printClock,
     {},
     Verb::Route::control,
     "action",
     kClockActions,
     true},
    {"inject",
     "simulate an event or a changed value of the device",
     printNothing,
     {},
     Verb::Route::control,
     "what",
     kInjectActions},
    {"status",
     "show what the telephone shows and why, and the host's state",
     printStatus,
     {VerbWord{"[--watch]", "watch", readOption}}},
    {"history",
     "list the last changes of the clock, zone and settings, or the last N of them",
     printHistory,
     {VerbWord{"[N]", nullptr, readMost}}},
    {"upcoming",
     "list the next N events and at least the first of each kind, without moving the clock; --plot "
     "draws the local offset",
     printUpcoming,
     {VerbWord{"[N] [--until UTC] [--plot FILE]", nullptr, readUpcoming}}},
    {"log",
     "show the application log, or its lines up to level N: 2 errors, 3 warnings, 4 notes, 5 all",
     printLog,
     {VerbWord{"[--level N] [--follow]", nullptr, readLog}}},
    {"log-level",
     "show up to which level standard error or the log file has the log, or change it to N",
     printLogLevel,
     {VerbWord{"[N]", nullptr, readLogLevel}}},
    {"security-log",
     "list who changed or tried to change what; a power loss may lose the latest records",
     printSecurityLog},
    {"record",
     "write what is done to the telephone, and its events, as a scenario",
     printRecorded,
     {VerbWord{"FILE", "file", readText},
      VerbWord{"[--count N] [--for DURATION] [--overwrite]", nullptr, readRecord}},
     Verb::Route::record},
    {"monitor",
     "print every frame between the host and its clients",
     printFrame,
     {},
     Verb::Route::stream},
};
static_assert(namesAreUnique(kVerbs));
static_assert(std::all_of(std::begin(kVerbs), std::end(kVerbs),
                          [](const Verb& verb) { return namesAreUnique(verb.actions); }));

}  // namespace host
