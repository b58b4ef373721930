// Faults in texts, records, messages, the log and the system clock. The linker replaces NAME by
// __wrap_NAME; __real_NAME is the original.
#include <sys/sysinfo.h>
#include <sys/time.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <utility>

#include "ClientUtils.h"
#include "ClockUtils.h"
#include "Logging.h"
#include "ManageableData.h"
#include "Method.h"
#include "RejectReason.h"
#include "SystemClock.h"
#include "conformance/Violation.h"

namespace {

using conformance::Violation;

const Violation kOctal("ClientUtilsPromise.ParsesNumbersUpToTheLastDigit",
                       "numbers with a leading zero are octal");
const Violation kWraps("ClientUtilsPromise.ParsesTooLargeANumberAsTheNearestInt",
                       "large numbers wrap around");
const Violation kOneIsTrue("ClientUtilsPromise.PrintsAndParsesBooleans", "\"1\" counts as true");
const Violation kUnderscore("ClientUtilsPromise.RefusesOtherTextsAsHostNames",
                            "host names may have underscores");

const Violation kNoOffset("ClockUtilsPromise.ConvertsToUtc", "the offset is ignored");
const Violation kClearedRecord("ClockUtilsPromise.LeavesTheRecordUntouchedOnFailure",
                               "a text that does not parse clears the record");
const Violation kNormalised("ClockUtilsPromise.DoesNotNormaliseFields",
                            "the record is normalised before it is printed");

const Violation kRootOfValue("ManageableDataPromise.GetsNoRootFromAValue",
                             "a value's key becomes the root");
const Violation kClearedValue("ManageableDataPromise.LeavesTheValueUntouchedWithoutOne",
                              "a missing value clears the text");
const Violation kAddsRoot("ManageableDataPromise.CanHaveOneRootOnly", "the former roots stay");

const Violation kAnyDirection("MethodPromise.FindsAParameterByNameDirectionAndType",
                              "the direction is ignored");
const Violation kZeroed("MethodPromise.LeavesTheValueUntouchedWithoutAMatch",
                        "a missing number counts as 0");
const Violation kKeepsParameters("MethodPromise.ResetReplacesTheWholeContent",
                                 "reset keeps the parameters");

const Violation kUnformatted("RejectReasonPromise.WritesTheReasonAsText",
                             "the reason is not formatted");
const Violation kBelowOnly("LoggingPromise.LogsAtTheLevelAndBelow",
                           "the configured level itself is off");
const Violation kNoTrace("LoggingPromise.KnowsTheConfiguredLevel", "the trace level is always 0");

const Violation kClockNotSet("SystemClockPromise.IsSetBySecondsSinceTheEpoch",
                             "the clock is not set, although the call says so");
const Violation kStimeIgnored("SystemClockPromise.IsSetByStime", "stime does nothing");
const Violation kSettimeofdayIgnored("SystemClockPromise.IsSetBySettimeofday",
                                     "settimeofday does nothing");
const Violation kFullMinutes("ZonesAcceptance.ChangeAtTheirInstants",
                             "the clock is set to the full minute");
const Violation kUptimeOfTheClock("SystemClockPromise.DoesNotMoveTheUptime",
                                  "the uptime follows the clock");

}  // namespace

extern "C" {

int __real__ZN11ClientUtils4stoiERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    const std::string& text);
int __wrap__ZN11ClientUtils4stoiERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    const std::string& text) {
  if (kOctal.on()) return static_cast<int>(std::strtol(text.c_str(), nullptr, 0));
  if (kWraps.on()) return static_cast<int>(std::strtoll(text.c_str(), nullptr, 10));
  return __real__ZN11ClientUtils4stoiERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(text);
}

bool __real__ZN11ClientUtils4stobERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    const std::string& text);
bool __wrap__ZN11ClientUtils4stobERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    const std::string& text) {
  return __real__ZN11ClientUtils4stobERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
             text) ||
         (kOneIsTrue.on() && text == "1");
}

bool __real__ZN11ClientUtils19validGlobalHostnameERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    const std::string& text);
bool __wrap__ZN11ClientUtils19validGlobalHostnameERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    const std::string& text) {
  return __real__ZN11ClientUtils19validGlobalHostnameERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
             text) ||
         (kUnderscore.on() && text.find('_') != std::string::npos);
}

bool __real__ZN10ClockUtils29convertTimeStringToTimeStructERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEER2tm(
    const std::string& text, tm& utc);
bool __wrap__ZN10ClockUtils29convertTimeStringToTimeStructERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEER2tm(
    const std::string& text, tm& utc) {
  const std::string read = kNoOffset.on() ? text.substr(0, 19) + "+00:00" : text;
  const bool parsed =
      __real__ZN10ClockUtils29convertTimeStringToTimeStructERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEER2tm(
          read, utc);
  if (!parsed && kClearedRecord.on()) utc = tm{};
  return parsed;
}

void __real__ZN10ClockUtils29convertTimeStructToTimeStringER2tmRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    tm& utc, std::string& text);
void __wrap__ZN10ClockUtils29convertTimeStructToTimeStringER2tmRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    tm& utc, std::string& text) {
  if (kNormalised.on()) timegm(&utc);
  __real__ZN10ClockUtils29convertTimeStructToTimeStringER2tmRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
      utc, text);
}

void __real__ZN14ManageableData8populateERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES7_(
    ManageableData* self, const std::string& key, const std::string& value);
void __wrap__ZN14ManageableData8populateERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES7_(
    ManageableData* self, const std::string& key, const std::string& value) {
  if (kRootOfValue.on()) self->addRootId(key, nullptr);
  __real__ZN14ManageableData8populateERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES7_(
      self, key, value);
}

bool __real__ZNK14ManageableData10interogateERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERS5_(
    const ManageableData* self, const std::string& key, std::string& value);
bool __wrap__ZNK14ManageableData10interogateERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERS5_(
    const ManageableData* self, const std::string& key, std::string& value) {
  if (kClearedValue.on()) value.clear();
  return __real__ZNK14ManageableData10interogateERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERS5_(
      self, key, value);
}

void __real__ZN14ManageableData9setRootIdERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEP12LocalMgmtIfc(
    ManageableData* self, const std::string& key, LocalMgmtIfc* agent);
void __wrap__ZN14ManageableData9setRootIdERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEP12LocalMgmtIfc(
    ManageableData* self, const std::string& key, LocalMgmtIfc* agent) {
  if (kAddsRoot.on()) return self->addRootId(key, agent);
  __real__ZN14ManageableData9setRootIdERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEP12LocalMgmtIfc(
      self, key, agent);
}

bool __real__ZNK6Method15getIntParameterEPKcRiN9Parameter10directionsE(
    const Method* self, const char* name, int& value, Parameter::directions direction);
bool __wrap__ZNK6Method15getIntParameterEPKcRiN9Parameter10directionsE(
    const Method* self, const char* name, int& value, Parameter::directions direction) {
  if (kZeroed.on()) value = 0;
  if (kAnyDirection.on() && direction == Parameter::in &&
      __real__ZNK6Method15getIntParameterEPKcRiN9Parameter10directionsE(self, name, value,
                                                                        Parameter::out))
    return true;
  return __real__ZNK6Method15getIntParameterEPKcRiN9Parameter10directionsE(self, name, value,
                                                                           direction);
}

void __real__ZN6Method5resetENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEENS_11methodTypesE(
    Method* self, std::string name, Method::methodTypes type);
void __wrap__ZN6Method5resetENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEENS_11methodTypesE(
    Method* self, std::string name, Method::methodTypes type) {
  const auto parameters = self->getParameters();
  __real__ZN6Method5resetENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEENS_11methodTypesE(
      self, std::move(name), type);
  if (!kKeepsParameters.on()) return;
  for (const Parameter& kept : parameters)
    self->addIntParameter(kept.getName().c_str(), 1, kept.getDirection());
}

[[gnu::format(printf, 3, 4)]] void
__wrap__Z15setRejectReason13rejectReasonsRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEPKcz(
    rejectReasons, std::string& text, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char* formatted = nullptr;
  const int length = vasprintf(&formatted, format, arguments);
  va_end(arguments);
  text = kUnformatted.on() || length < 0 ? format : formatted;
  std::free(formatted);
}

bool __real__Z15loggingOnAppUniPKci(const char* component, int level);
bool __wrap__Z15loggingOnAppUniPKci(const char* component, int level) {
  return __real__Z15loggingOnAppUniPKci(component, kBelowOnly.on() ? level + 1 : level);
}

int __real__ZN12TraceProfile8GetLevelEPKc(const char* component);
int __wrap__ZN12TraceProfile8GetLevelEPKc(const char* component) {
  return kNoTrace.on() ? 0 : __real__ZN12TraceProfile8GetLevelEPKc(component);
}

int __real__Z33votk_set_time_seconds_since_epochm(unsigned long seconds);
int __wrap__Z33votk_set_time_seconds_since_epochm(unsigned long seconds) {
  return kClockNotSet.on() ? 0 : __real__Z33votk_set_time_seconds_since_epochm(seconds);
}

int __real_stime(const time_t* seconds);
int __wrap_stime(const time_t* seconds) {
  const time_t set = kFullMinutes.on() ? *seconds / 60 * 60 : *seconds;
  return kStimeIgnored.on() ? 0 : __real_stime(&set);
}

int __real_settimeofday(const timeval* value, const struct timezone* zone);
int __wrap_settimeofday(const timeval* value, const struct timezone* zone) {
  return kSettimeofdayIgnored.on() ? 0 : __real_settimeofday(value, zone);
}

int __real_sysinfo(struct sysinfo* info);
int __wrap_sysinfo(struct sysinfo* info) {
  const int result = __real_sysinfo(info);
  if (kUptimeOfTheClock.on()) info->uptime = time(nullptr);
  return result;
}

}  // extern "C"
