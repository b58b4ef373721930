#include "remote/JsonMethodReader.h"

#include <limits>
#include <utility>

namespace host {
namespace {

bool isOneBit(int number) {
  return number == 0 || number == 1;
}

}  // namespace

bool JsonMethodReader::finish(Method& method) const {
  if (!m_name) return false;
  method.reset(*m_name, static_cast<Method::methodTypes>(m_type.value_or(Method::call)));
  for (const Item& item : m_items) add(method, item);
  return true;
}

void JsonMethodReader::add(Method& method, const Item& item) {
  const char* const name = item.name->c_str();
  const auto direction = static_cast<Parameter::directions>(item.direction.value_or(Parameter::in));
  if (const int* number = std::get_if<int>(&item.value)) {
    method.addIntParameter(name, *number, direction);
  } else if (const bool* flag = std::get_if<bool>(&item.value)) {
    method.addBoolParameter(name, *flag, direction);
  } else {
    method.addStringParameter(name, std::get<std::string>(item.value), direction);
  }
}

bool JsonMethodReader::boolean(bool value) {
  if (std::exchange(m_member, Member::none) != Member::value) return false;
  m_items.back().value = value;
  return true;
}

bool JsonMethodReader::number_integer(number_integer_t number) {
  return integer(number);
}

bool JsonMethodReader::number_unsigned(number_unsigned_t number) {
  return number <= static_cast<number_unsigned_t>(std::numeric_limits<int>::max()) &&
         integer(static_cast<std::int64_t>(number));
}

bool JsonMethodReader::integer(std::int64_t number) {
  if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
    return false;
  }
  const int value = static_cast<int>(number);
  switch (std::exchange(m_member, Member::none)) {
    case Member::type:
      m_type = value;
      return isOneBit(value);
    case Member::direction:
      m_items.back().direction = value;
      return isOneBit(value);
    case Member::value:
      m_items.back().value = value;
      return true;
    default:
      return false;
  }
}

bool JsonMethodReader::string(string_t& text) {
  switch (std::exchange(m_member, Member::none)) {
    case Member::name:
      if (m_place == Place::method) {
        m_name = text;
        return true;
      }
      m_items.back().name = text;
      // Method takes names as C strings: a NUL would cut the name.
      return text.find('\0') == std::string::npos;
    case Member::value:
      m_items.back().value = text;
      return true;
    default:
      return false;
  }
}

bool JsonMethodReader::start_object(std::size_t) {
  if (m_place == Place::outside) {
    m_place = Place::method;
    return true;
  }
  if (m_place != Place::list) return false;
  m_place = Place::parameter;
  m_items.emplace_back();
  return true;
}

bool JsonMethodReader::key(string_t& name) {
  static const std::pair<const char*, Member> ofMethod[] = {
      {"name", Member::name}, {"type", Member::type}, {"parameters", Member::parameters}};
  static const std::pair<const char*, Member> ofParameter[] = {
      {"name", Member::name}, {"direction", Member::direction}, {"value", Member::value}};
  for (const auto& [text, member] : m_place == Place::method ? ofMethod : ofParameter) {
    if (name != text) continue;
    m_member = member;
    return isNew(member);
  }
  return false;
}

bool JsonMethodReader::isNew(Member member) const {
  switch (member) {
    case Member::name:
      return m_place == Place::method ? !m_name : !m_items.back().name;
    case Member::type:
      return !m_type;
    case Member::parameters:
      return !m_listSeen;
    case Member::direction:
      return !m_items.back().direction;
    default:
      return m_items.back().value.index() == 0;
  }
}

bool JsonMethodReader::end_object() {
  if (m_place == Place::parameter) {
    m_place = Place::list;
    return m_items.back().name && m_items.back().value.index() != 0;
  }
  m_place = Place::outside;
  return true;
}

bool JsonMethodReader::start_array(std::size_t) {
  if (std::exchange(m_member, Member::none) != Member::parameters) return false;
  m_place = Place::list;
  m_listSeen = true;
  return true;
}

bool JsonMethodReader::end_array() {
  m_place = Place::method;
  return true;
}

}  // namespace host
