// Remote calls in JSON: what is read is what stands there, the same after a round trip, and no
// other call in MessagePack.

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
  hold(json.at("name") == parameter.getName(), "a parameter has its name", parameter.getName());
  hold(json.value("direction", Json(0)) == Json(static_cast<int>(parameter.getDirection())),
       "a parameter has its direction", parameter.getName());
  hold(json.at("value") == valueOf(parameter), "a parameter has its value", parameter.getName());
}

// Against the text as the library reads it when nobody follows.
void holdMeaning(const Method& method, const std::string& text) {
  const Json json = Json::parse(text);
  hold(json.at("name") == method.getName(), "a method has its name", text);
  hold(json.value("type", Json(0)) == Json(static_cast<int>(method.getType())),
       "a method has its type", text);
  const Json parameters = json.value("parameters", Json::array());
  const auto& came = method.getParameters();
  hold(parameters.size() == came.size(), "a method has its parameters", text);
  for (std::size_t i = 0; i < came.size(); ++i) holdParameter(came[i], parameters[i]);
}

}  // namespace

void fuzz::property(std::string_view input) {
  const std::string text = grown(input);
  host::JsonCodec json;
  auto method = holdCodec(json, text);
  if (!method) return;
  holdMeaning(*method, text);
  host::MessagePackCodec messagePack;
  holdRoundTrip(messagePack, *method, text);
}
