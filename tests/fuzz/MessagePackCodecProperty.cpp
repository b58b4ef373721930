// Remote calls in MessagePack: only the valid layout is decoded, decoding yields the encoded
// values, and a round trip changes nothing.

#include "remote/MessagePackCodec.h"

#include <algorithm>
#include <limits>
#include <msgpack.hpp>

#include "fuzz/CodecRoundTrip.h"
#include "fuzz/Property.h"

namespace {

using fuzz::hold;
using Object = msgpack::object;
using msgpack::type::object_type;

std::string_view textOf(const Object& object) {
  return {object.via.str.ptr, object.via.str.size};
}

bool isText(const Object& object) {
  return object.type == object_type::STR;
}

bool isNumber(const Object& object) {
  if (object.type == object_type::POSITIVE_INTEGER)
    return object.via.u64 <= std::numeric_limits<int>::max();
  return object.type == object_type::NEGATIVE_INTEGER &&
         object.via.i64 >= std::numeric_limits<int>::min();
}

bool isBit(const Object& object) {
  return object.type == object_type::POSITIVE_INTEGER && object.via.u64 <= 1;
}

bool isArray(const Object& object) {
  return object.type == object_type::ARRAY;
}

bool isParameter(const Object& object) {
  if (!isArray(object) || object.via.array.size != 3) return false;
  const Object* const part = object.via.array.ptr;
  return isText(part[0]) && textOf(part[0]).find('\0') == std::string_view::npos &&
         isBit(part[1]) &&
         (isText(part[2]) || isNumber(part[2]) || part[2].type == object_type::BOOLEAN);
}

bool isMethod(const Object& object) {
  if (!isArray(object) || object.via.array.size != 3) return false;
  const Object* const part = object.via.array.ptr;
  return isText(part[0]) && isBit(part[1]) && isArray(part[2]) &&
         std::all_of(part[2].via.array.ptr, part[2].via.array.ptr + part[2].via.array.size,
                     isParameter);
}

void holdParameter(const Parameter& parameter, const Object* part) {
  const Object& value = part[2];
  hold(parameter.getName() == textOf(part[0]), "a parameter has the encoded name", textOf(part[0]));
  hold(parameter.getDirection() == static_cast<int>(part[1].via.u64),
       "a parameter has the encoded direction");
  if (isText(value))
    return hold(parameter.getString() == textOf(value), "a parameter has the encoded text");
  if (isNumber(value))
    return hold(parameter.getInt() == value.via.i64, "a parameter has the encoded number");
  hold(parameter.getType() == Parameter::boolean && parameter.getBool() == value.via.boolean,
       "a parameter has the encoded flag");
}

void holdMeaning(const Method& method, const Object& object) {
  const Object* const part = object.via.array.ptr;
  const auto& parameters = method.getParameters();
  hold(method.getName() == textOf(part[0]), "a method has the encoded name", textOf(part[0]));
  hold(method.getType() == static_cast<int>(part[1].via.u64), "a method has the encoded type");
  hold(parameters.size() == part[2].via.array.size, "a method has as many parameters as encoded");
  for (std::size_t i = 0; i < parameters.size(); ++i)
    holdParameter(parameters[i], part[2].via.array.ptr[i].via.array.ptr);
}

// The bytes as the library reads them without callbacks. The limits keep a length that is only
// announced from taking memory.
bool unpack(std::string_view bytes, msgpack::object_handle& whole) {
  constexpr std::size_t kMost = 100'000;
  try {
    std::size_t used = 0;
    const msgpack::unpack_limit limit(kMost, kMost, kMost, kMost, kMost, 100);
    whole = msgpack::unpack(bytes.data(), bytes.size(), used, nullptr, nullptr, limit);
    return used == bytes.size();
  } catch (const msgpack::unpack_error&) {
    return false;
  }
}

}  // namespace

void fuzz::property(std::string_view input) {
  host::MessagePackCodec codec;
  const auto method = holdCodec(codec, input);
  msgpack::object_handle whole;
  const bool good = unpack(input, whole) && isMethod(whole.get());
  hold(method.has_value() == good, "exactly the valid layout is decoded", input);
  if (good) holdMeaning(*method, whole.get());
}
