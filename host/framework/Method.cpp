#include "Method.h"

#include <utility>

#include "base/OrEmpty.h"

namespace {

// Enough for most calls and replies, so that one allocation suffices.
constexpr std::size_t kUsualParameters = 3;

const Parameter* find(const std::vector<Parameter>& parameters, const char* name,
                      Parameter::directions direction, Parameter::types type) {
  if (name == nullptr) return nullptr;
  for (const Parameter& parameter : parameters) {
    if (parameter.getType() == type && parameter.getDirection() == direction &&
        parameter.getName() == name) {
      return &parameter;
    }
  }
  return nullptr;
}

void makeRoom(std::vector<Parameter>& parameters) {
  if (parameters.capacity() == 0) parameters.reserve(kUsualParameters);
}

}  // namespace

Parameter::Parameter(std::string name, directions direction, int value)
    : m_name(std::move(name)), m_number(value), m_type(integer), m_direction(direction) {}

Parameter::Parameter(std::string name, directions direction, std::string value)
    : m_name(std::move(name)),
      m_text(std::move(value)),
      m_number(0),
      m_type(text),
      m_direction(direction) {}

Parameter::Parameter(std::string name, directions direction, bool value)
    : m_name(std::move(name)), m_number(value ? 1 : 0), m_type(boolean), m_direction(direction) {}

Method::Method() : m_type(call) {}

Method::Method(const char* name, methodTypes type) : m_name(host::orEmpty(name)), m_type(type) {}

Method::~Method() = default;
Method::Method(const Method&) = default;
Method& Method::operator=(const Method&) = default;

void Method::reset(std::string name, methodTypes type) {
  m_name = std::move(name);
  m_type = type;
  m_parameters.clear();
}

void Method::addIntParameter(const char* name, int value, Parameter::directions direction) {
  makeRoom(m_parameters);
  m_parameters.emplace_back(host::orEmpty(name), direction, value);
}

void Method::addStringParameter(const char* name, const std::string& value,
                                Parameter::directions direction) {
  makeRoom(m_parameters);
  m_parameters.emplace_back(host::orEmpty(name), direction, value);
}

void Method::addBoolParameter(const char* name, bool value, Parameter::directions direction) {
  makeRoom(m_parameters);
  m_parameters.emplace_back(host::orEmpty(name), direction, value);
}

bool Method::getIntParameter(const char* name, int& value, Parameter::directions direction) const {
  const Parameter* found = find(m_parameters, name, direction, Parameter::integer);
  if (found != nullptr) value = found->getInt();
  return found != nullptr;
}

bool Method::getStringParameter(const char* name, std::string& value,
                                Parameter::directions direction) const {
  const Parameter* found = find(m_parameters, name, direction, Parameter::text);
  if (found != nullptr) value = found->getString();
  return found != nullptr;
}

bool Method::getBoolParameter(const char* name, bool& value,
                              Parameter::directions direction) const {
  const Parameter* found = find(m_parameters, name, direction, Parameter::boolean);
  if (found != nullptr) value = found->getBool();
  return found != nullptr;
}
