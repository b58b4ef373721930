#include "remote/MessagePackCodec.h"

#include <array>
#include <cstring>
#include <iostream>
#include <limits>
#include <msgpack.hpp>
#include <string>

#include "Method.h"
#include "remote/ReadToEnd.h"

namespace host {
namespace {

// Buffers a packer's dozen small writes for a few large ones to the stream.
class Sink {
 public:
  explicit Sink(std::streambuf& stream) : m_stream(stream) {}

  void write(const char* data, std::size_t size) {
    if (size > m_part.size() - m_used) flush();
    if (size > m_part.size()) {
      m_stream.sputn(data, static_cast<std::streamsize>(size));
      return;
    }
    std::memcpy(m_part.data() + m_used, data, size);
    m_used += size;
  }

  void flush() {
    m_stream.sputn(m_part.data(), static_cast<std::streamsize>(m_used));
    m_used = 0;
  }

 private:
  std::streambuf& m_stream;
  std::array<char, 512> m_part;
  std::size_t m_used = 0;
};

using Packer = msgpack::packer<Sink>;

void packText(Packer& packer, const std::string& text) {
  packer.pack_str(static_cast<std::uint32_t>(text.size()));
  packer.pack_str_body(text.data(), static_cast<std::uint32_t>(text.size()));
}

void packParameter(Packer& packer, const Parameter& parameter) {
  packer.pack_array(3);
  packText(packer, parameter.getName());
  packer.pack_int(parameter.getDirection());
  switch (parameter.getType()) {
    case Parameter::integer:
      packer.pack_int(parameter.getInt());
      break;
    case Parameter::text:
      packText(packer, parameter.getString());
      break;
    case Parameter::boolean:
      parameter.getBool() ? packer.pack_true() : packer.pack_false();
      break;
  }
}

// Receives the parser's events, accepts exactly the one shape, and fills a Method. A refusal
// (false) ends the parse, so that nesting and announced counts cost nothing.
class Visitor : public msgpack::null_visitor {
 public:
  explicit Visitor(Method& method) : m_method(method) {}

  bool visit_nil() { return false; }
  bool visit_float32(float) { return false; }
  bool visit_float64(double) { return false; }
  bool visit_bin(const char*, std::uint32_t) { return false; }
  bool visit_ext(const char*, std::uint32_t) { return false; }
  bool start_map(std::uint32_t) { return false; }

  bool start_array(std::uint32_t count) {
    switch (m_next) {
      case Next::method:
        return count == 3 && go(Next::name);
      case Next::parameters:
        return go(Next::parameter);
      case Next::parameter:
        return count == 3 && go(Next::parameterName);
      default:
        return false;
    }
  }
  bool end_array() { return true; }

  bool visit_str(const char* text, std::uint32_t size) {
    switch (m_next) {
      case Next::name:
        m_name.assign(text, size);
        return go(Next::type);
      case Next::parameterName:
        m_name.assign(text, size);
        // Method takes names as C strings: a NUL would cut the name.
        return m_name.find('\0') == std::string::npos && go(Next::direction);
      case Next::value:
        m_method.addStringParameter(m_name.c_str(), std::string(text, size), m_direction);
        return go(Next::parameter);
      default:
        return false;
    }
  }

  bool visit_boolean(bool value) {
    if (m_next != Next::value) return false;
    m_method.addBoolParameter(m_name.c_str(), value, m_direction);
    return go(Next::parameter);
  }

  bool visit_positive_integer(std::uint64_t number) {
    constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<int>::max());
    return number <= kLargest && visitInt(static_cast<int>(number));
  }
  bool visit_negative_integer(std::int64_t number) {
    // Also called for non-negative numbers that were packed with a sign.
    return number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max() &&
           visitInt(static_cast<int>(number));
  }

 private:
  enum class Next { method, name, type, parameters, parameter, parameterName, direction, value };

  bool go(Next next) {
    m_next = next;
    return true;
  }

  bool visitInt(int number) {
    switch (m_next) {
      case Next::type:
        if (number != Method::call && number != Method::reply) return false;
        m_method.reset(std::move(m_name), static_cast<Method::methodTypes>(number));
        return go(Next::parameters);
      case Next::direction:
        if (number != Parameter::in && number != Parameter::out) return false;
        m_direction = static_cast<Parameter::directions>(number);
        return go(Next::value);
      case Next::value:
        m_method.addIntParameter(m_name.c_str(), number, m_direction);
        return go(Next::parameter);
      default:
        return false;
    }
  }

  Method& m_method;
  Next m_next = Next::method;
  std::string m_name;
  Parameter::directions m_direction = Parameter::in;
};

}  // namespace

void MessagePackCodec::encode(Method& method, std::iostream& stream) {
  Sink sink(*stream.rdbuf());
  Packer packer(sink);
  packer.pack_array(3);
  packText(packer, method.getName());
  packer.pack_int(method.getType());
  packer.pack_array(static_cast<std::uint32_t>(method.getParameters().size()));
  for (const Parameter& parameter : method.getParameters()) packParameter(packer, parameter);
  sink.flush();
}

bool MessagePackCodec::decode(std::iostream& stream, Method& method) {
  const std::optional<std::string> bytes = readToEnd(stream);
  if (!bytes) return false;
  Method decoded;
  Visitor visitor(decoded);
  std::size_t used = 0;
  if (!msgpack::parse(bytes->data(), bytes->size(), used, visitor)) return false;
  if (used != bytes->size()) return false;
  method = decoded;
  return true;
}

}  // namespace host
