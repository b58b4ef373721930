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

Json eventTimeJson(std::chrono::seconds utc, std::chrono::seconds offset) {
  return {{"utc", instantText(utc)},
          {"utcSeconds", utc.count()},
          {"local", localInstantText(utc, offset)},
          {"localSeconds", (utc + offset).count()}};
}

}  // namespace host
