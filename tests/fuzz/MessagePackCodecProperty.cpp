// Remote calls in MessagePack: read when they have the one shape there is, as what stands there,
// and the same after a round trip.

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
  hold(parameter.getName() == textOf(part[0]), "a parameter has its name", textOf(part[0]));
  hold(parameter.getDirection() == static_cast<int>(part[1].via.u64), "and its direction");
  if (isText(value)) return hold(parameter.getString() == textOf(value), "and its text");
  if (isNumber(value)) return hold(parameter.getInt() == value.via.i64, "and its number");
  hold(parameter.getType() == Parameter::boolean && parameter.getBool() == value.via.boolean,
       "and its flag");
}

void holdMeaning(const Method& method, const Object& object) {
  const Object* const part = object.via.array.ptr;
  const auto& came = method.getParameters();
  hold(method.getName() == textOf(part[0]), "a method has its name", textOf(part[0]));
  hold(method.getType() == static_cast<int>(part[1].via.u64), "a method has its type");
  hold(came.size() == part[2].via.array.size, "a method has its parameters");
  for (std::size_t i = 0; i < came.size(); ++i)
    holdParameter(came[i], part[2].via.array.ptr[i].via.array.ptr);
}

// The bytes as the library reads them when nobody follows; what is only announced costs nothing.
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
  hold(method.has_value() == good, "a method has the one shape there is", input);
  if (good) holdMeaning(*method, whole.get());
}
