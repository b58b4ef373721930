#include "framework/ChildEnvironment.h"

#include <algorithm>
#include <string_view>

#include "clock/ClockMessage.h"

namespace host {
namespace {

constexpr std::string_view kStandInVariables[] = {"CLOCKHOST_PIPE", "NTPCLIENT_PORT",
                                                  "NTPCLIENT_RETRY_MS"};

std::string_view nameOf(std::string_view variable) {
  return variable.substr(0, variable.find('='));
}

// In a sanitizer build the stand-ins get the sanitizer's options too.
bool isForStandIns(std::string_view name) {
  return std::find(std::begin(kStandInVariables), std::end(kStandInVariables), name) !=
             std::end(kStandInVariables) ||
         name.ends_with("SAN_OPTIONS");
}

}  // namespace

std::vector<std::string> childEnvironment(const std::vector<std::string>& given, bool standIn,
                                          int channel) {
  std::vector<std::string> variables;
  for (const std::string& variable : given) {
    const std::string_view name = nameOf(variable);
    if (name == kClockChannelVariable || (standIn && !isForStandIns(name))) continue;
    variables.push_back(variable);
  }
  if (channel >= 0) {
    variables.push_back(std::string(kClockChannelVariable) + '=' + std::to_string(channel));
  }
  return variables;
}

}  // namespace host
