#include "fuzz/CodecRoundTrip.h"

#include <algorithm>
#include <sstream>
#include <string>

#include "MessageCodec.h"
#include "fuzz/Property.h"

namespace fuzz {
namespace {

bool sameParameter(const Parameter& one, const Parameter& other) {
  return one.getName() == other.getName() && one.getDirection() == other.getDirection() &&
         one.getType() == other.getType() && one.getInt() == other.getInt() &&
         one.getString() == other.getString();
}

bool same(const Method& one, const Method& other) {
  const auto& left = one.getParameters();
  const auto& right = other.getParameters();
  return one.getName() == other.getName() && one.getType() == other.getType() &&
         std::equal(left.begin(), left.end(), right.begin(), right.end(), sameParameter);
}

bool decodes(MessageCodec& codec, std::string_view bytes, Method& method) {
  std::stringstream stream{std::string(bytes)};
  return codec.decode(stream, method);
}

std::string encoded(MessageCodec& codec, Method& method) {
  std::stringstream stream;
  codec.encode(method, stream);
  return stream.str();
}

Method otherMethod() {
  Method method("otherMethod", Method::reply);
  method.addBoolParameter("kept", true, Parameter::out);
  return method;
}

}  // namespace

void holdRoundTrip(MessageCodec& codec, Method& method, std::string_view of) {
  const std::string written = encoded(codec, method);
  Method again = otherMethod();
  hold(decodes(codec, written, again), "a codec can decode what it encodes", of);
  hold(same(method, again), "decoding yields the encoded method", of);
  hold(encoded(codec, again) == written, "a codec encodes the same method to the same bytes", of);
}

std::optional<Method> holdCodec(MessageCodec& codec, std::string_view bytes) {
  const Method before = otherMethod();
  Method method = before;
  if (!decodes(codec, bytes, method)) {
    hold(same(method, before), "a failed decoding changes nothing", bytes);
    return std::nullopt;
  }
  holdRoundTrip(codec, method, bytes);
  return method;
}

}  // namespace fuzz
