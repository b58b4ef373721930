#include "simulation/world/PlainCodec.h"

#include <iostream>
#include <iterator>
#include <optional>

#include "simulation/Wire.h"

namespace simulation {
namespace {

std::string valueOf(const Parameter& parameter) {
  switch (parameter.getType()) {
    case Parameter::integer:
      return std::to_string(parameter.getInt());
    case Parameter::boolean:
      return parameter.getBool() ? "true" : "false";
    case Parameter::text:
      return parameter.getString();
  }
  return {};
}

constexpr const char* kTypes[] = {"integer", "text", "boolean"};

// Takes fields off the front of the bytes.
class Fields {
 public:
  explicit Fields(std::string bytes) : m_bytes(std::move(bytes)) {}

  [[nodiscard]] bool atEnd() const { return m_at == m_bytes.size(); }
  std::optional<std::string> take() {
    const std::size_t colon = m_bytes.find(':', m_at);
    if (colon == std::string::npos || colon == m_at || colon - m_at > 6) return std::nullopt;
    std::size_t length = 0;
    for (; m_at < colon; ++m_at) {
      if (m_bytes[m_at] < '0' || m_bytes[m_at] > '9') return std::nullopt;
      length = length * 10 + static_cast<std::size_t>(m_bytes[m_at] - '0');
    }
    if (length > m_bytes.size() - ++m_at) return std::nullopt;
    m_at += length;
    return m_bytes.substr(m_at - length, length);
  }

 private:
  std::string m_bytes;
  std::size_t m_at = 0;
};

bool addParameter(Method& method, Fields& fields) {
  const auto name = fields.take();
  const auto direction = fields.take();
  const auto type = fields.take();
  const auto value = fields.take();
  if (!value) return false;
  const auto way = *direction == "1" ? Parameter::out : Parameter::in;
  if (*type == "text") method.addStringParameter(name->c_str(), *value, way);
  if (*type == "boolean") method.addBoolParameter(name->c_str(), *value == "true", way);
  if (*type == "integer") method.addIntParameter(name->c_str(), std::stoi(*value), way);
  return true;
}

}  // namespace

void PlainCodec::encode(Method& method, std::iostream& stream) {
  std::string bytes;
  putField(bytes, method.getName());
  putField(bytes, std::to_string(method.getType()));
  for (const Parameter& parameter : method.getParameters()) {
    putField(bytes, parameter.getName());
    putField(bytes, std::to_string(parameter.getDirection()));
    putField(bytes, kTypes[parameter.getType()]);
    putField(bytes, valueOf(parameter));
  }
  stream << bytes;
}

bool PlainCodec::decode(std::iostream& stream, Method& method) {
  Fields fields({std::istreambuf_iterator<char>(stream), {}});
  const auto name = fields.take();
  const auto type = fields.take();
  if (!name || !type) return false;
  method.reset(*name, *type == "1" ? Method::reply : Method::call);
  while (!fields.atEnd()) {
    if (!addParameter(method, fields)) return false;
  }
  return true;
}

std::string describe(const Method& method) {
  std::string text = std::to_string(method.getType()) + " " + method.getName();
  for (const Parameter& parameter : method.getParameters()) {
    const char* const quote = parameter.getType() == Parameter::text ? "\"" : "";
    text += " " + parameter.getName() + "/" + std::to_string(parameter.getDirection()) + "=";
    text += quote + valueOf(parameter) + quote;
  }
  return text;
}

}  // namespace simulation
