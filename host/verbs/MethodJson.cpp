#include "verbs/MethodJson.h"

#include <nlohmann/json.hpp>

#include "Method.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

Json valueJson(const Parameter& parameter) {
  if (parameter.getType() == Parameter::integer) return parameter.getInt();
  if (parameter.getType() == Parameter::boolean) return parameter.getBool();
  return parameter.getString();
}

}  // namespace

Json parametersJson(const Method& method) {
  Json json = Json::object();
  for (const Parameter& parameter : method.getParameters()) {
    json[parameter.getName()] = valueJson(parameter);
  }
  return json;
}

Json eventTimeJson(std::chrono::seconds sinceEpoch, std::chrono::seconds offset) {
  return {{"utc", instantText(sinceEpoch)},
          {"utcSeconds", sinceEpoch.count()},
          {"local", localInstantText(sinceEpoch, offset)},
          {"localSeconds", (sinceEpoch + offset).count()}};
}

}  // namespace host
