// Remote calls in JSON: decoding yields the encoded values, and a round trip through JSON or
// MessagePack changes nothing.

#include "remote/JsonCodec.h"

#include <nlohmann/json.hpp>

#include "fuzz/CodecRoundTrip.h"
#include "fuzz/Property.h"
#include "remote/MessagePackCodec.h"

namespace {

using fuzz::hold;
using Json = nlohmann::json;

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

void holdParameter(const Parameter& parameter, const Json& json) {
  hold(json.at("name") == parameter.getName(), "a parameter has the encoded name",
       parameter.getName());
  hold(json.value("direction", Json(0)) == Json(static_cast<int>(parameter.getDirection())),
       "a parameter has the encoded direction", parameter.getName());
  hold(json.at("value") == valueOf(parameter), "a parameter has the encoded value",
       parameter.getName());
}

// Compares with the text as the library parses it without callbacks.
void holdMeaning(const Method& method, const std::string& text) {
  const Json json = Json::parse(text);
  hold(json.at("name") == method.getName(), "a method has the encoded name", text);
  hold(json.value("type", Json(0)) == Json(static_cast<int>(method.getType())),
       "a method has the encoded type", text);
  const Json expected = json.value("parameters", Json::array());
  const auto& parameters = method.getParameters();
  hold(expected.size() == parameters.size(), "a method has as many parameters as encoded", text);
  for (std::size_t i = 0; i < parameters.size(); ++i) holdParameter(parameters[i], expected[i]);
}

}  // namespace

void fuzz::property(std::string_view input) {
  const std::string text = expanded(input);
  host::JsonCodec json;
  auto method = holdCodec(json, text);
  if (!method) return;
  holdMeaning(*method, text);
  host::MessagePackCodec messagePack;
  holdRoundTrip(messagePack, *method, text);
}
