#include "remote/JsonCodec.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "remote/JsonMethodReader.h"
#include "remote/StreamBytes.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

Json valueOf(const Parameter& parameter) {
  switch (parameter.getType()) {
    case Parameter::integer:
      return parameter.getInt();
    case Parameter::boolean:
      return parameter.getBool();
    default:
      return parameter.getString();
  }
}

}  // namespace

void JsonCodec::encode(Method& method, std::iostream& stream) {
  Json parameters = Json::array();
  for (const Parameter& parameter : method.getParameters()) {
    parameters.push_back({{"name", parameter.getName()},
                          {"direction", parameter.getDirection()},
                          {"value", valueOf(parameter)}});
  }
  const Json whole = {
      {"name", method.getName()}, {"type", method.getType()}, {"parameters", parameters}};
  stream << whole.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool JsonCodec::decode(std::iostream& stream, Method& method) {
  const std::optional<std::string> bytes = readToEnd(stream);
  if (!bytes) return false;
  // JSON has no NUL. The library would take one for the end and ignore the rest.
  if (bytes->find('\0') != std::string::npos) return false;
  JsonMethodReader reader;
  if (!nlohmann::json::sax_parse(*bytes, &reader)) return false;
  return reader.finish(method);
}

}  // namespace host
