#pragma once

#include "verbs/Verb.h"
#include "verbs/VerbPrinters.h"
#include "verbs/VerbWords.h"

// The whole command line of clockctl, and the verbs of a scenario, in the order of the help. What
// the host does for each control verb and action stands in operator/HostActions.cpp.
namespace host {

inline constexpr VerbWord kKey{"KEY", "key", readText};
inline constexpr VerbWord kValue{"VALUE", "value", readText};

inline constexpr VerbAction kClockActions[] = {
    {"show"},
    {"speed", {VerbWord{"X", "speed", readSpeed}}},
    {"pause"},
    {"advance", {VerbWord{"DURATION", "seconds", readDuration}}, true},
    {"next"},
    {"jump", {VerbWord{"UTC", "seconds", readInstant}}},
    {"to", {VerbWord{"hour|midnight|dst|leap-day|2038", "landmark", readChoice}}, true},
};

inline constexpr VerbAction kInjectActions[] = {
    {"jack", {VerbWord{"PLUG", "plug", readInteger}, VerbWord{"STATUS", "status", readInteger}}},
    {"network", {VerbWord{"up|down", "value", readChoice}}},
    {"dhcp", {kValue}},
    {"mobility", {kValue}},
    {"user-data", {kKey, VerbWord{"on|off", "value", readChoice}}},
    {"value", {kKey, VerbWord{"TEXT", "value", readText}}},
};

inline constexpr Verb kVerbs[] = {
    {"call",
     "call a method of the service; NAME:int=VALUE or NAME:string=VALUE sets the type",
     printCall,
     {VerbWord{"METHOD", "method", readText},
      VerbWord{"[NAME=VALUE ...]", "arguments", readArguments}},
     Verb::Route::call},
    {"get", "read a management value", printValue, {kKey}},
    {"set", "write a management value", printNothing, {kKey, kValue}},
    {"reset", "restore the device's default date and time formats", printNothing},
    {"keys", "list the management keys and their values", printKeys},
    {"watch",
     "print the service's events as they arrive",
     printEvent,
     {VerbWord{"[--count N]", "count", readCount}},
     Verb::Route::watch},
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
    {"status", "show the host's state", printStatus},
    {"log", "show the application log", printLog, {VerbWord{"[--follow]", "follow", readOption}}},
    {"security-log",
     "list who changed or tried to change what; a power loss may lose the latest records",
     printSecurityLog},
};

}  // namespace host
