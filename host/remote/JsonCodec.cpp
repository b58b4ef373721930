#include "remote/JsonCodec.h"

#include <iostream>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Method.h"
#include "remote/ReadToEnd.h"

namespace host {
namespace {

using OrderedJson = nlohmann::ordered_json;

OrderedJson valueOf(const Parameter& parameter) {
  switch (parameter.getType()) {
    case Parameter::integer:
      return parameter.getInt();
    case Parameter::boolean:
      return parameter.getBool();
    default:
      return parameter.getString();
  }
}

bool isOneBit(int number) {
  return number == 0 || number == 1;
}

// Receives a JSON parser's events for the members of a Method. A refusal (false) ends the parse, so
// that nested input costs nothing.
class MethodReader : public nlohmann::json_sax<nlohmann::json> {
 public:
  // After a complete parse: fills `method`. False, leaving it unchanged, if a member is missing.
  [[nodiscard]] bool finish(Method& method) const {
    if (!m_name) return false;
    method.reset(*m_name, static_cast<Method::methodTypes>(m_type.value_or(Method::call)));
    for (const Item& item : m_items) add(method, item);
    return true;
  }

  bool null() override { return false; }
  bool number_float(number_float_t, const string_t&) override { return false; }
  bool binary(binary_t&) override { return false; }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
    return false;
  }

  bool boolean(bool value) override {
    if (std::exchange(m_member, Member::none) != Member::value) return false;
    m_items.back().value = value;
    return true;
  }

  bool number_unsigned(number_unsigned_t number) override {
    return number <= static_cast<number_unsigned_t>(std::numeric_limits<int>::max()) &&
           number_integer(static_cast<number_integer_t>(number));
  }

  bool number_integer(number_integer_t number) override {
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

  bool string(string_t& text) override {
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

  bool start_object(std::size_t) override {
    if (m_place == Place::outside) {
      m_place = Place::method;
      return true;
    }
    if (m_place != Place::parameters) return false;
    m_place = Place::parameter;
    m_items.emplace_back();
    return true;
  }

  bool key(string_t& name) override {
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

  bool end_object() override {
    if (m_place == Place::parameter) {
      m_place = Place::parameters;
      return m_items.back().name && m_items.back().value.index() != 0;
    }
    m_place = Place::outside;
    return true;
  }

  bool start_array(std::size_t) override {
    if (std::exchange(m_member, Member::none) != Member::parameters) return false;
    m_place = Place::parameters;
    m_parametersSeen = true;
    return true;
  }

  bool end_array() override {
    m_place = Place::method;
    return true;
  }

 private:
  enum class Place { outside, method, parameters, parameter };
  enum class Member { none, name, type, parameters, direction, value };

  struct Item {
    std::optional<std::string> name;
    std::optional<int> direction;
    std::variant<std::monostate, int, bool, std::string> value;
  };

  static void add(Method& method, const Item& item) {
    const char* const name = item.name->c_str();
    const auto direction =
        static_cast<Parameter::directions>(item.direction.value_or(Parameter::in));
    if (const int* number = std::get_if<int>(&item.value)) {
      method.addIntParameter(name, *number, direction);
    } else if (const bool* flag = std::get_if<bool>(&item.value)) {
      method.addBoolParameter(name, *flag, direction);
    } else {
      method.addStringParameter(name, std::get<std::string>(item.value), direction);
    }
  }

  [[nodiscard]] bool isNew(Member member) const {
    switch (member) {
      case Member::name:
        return m_place == Place::method ? !m_name : !m_items.back().name;
      case Member::type:
        return !m_type;
      case Member::parameters:
        return !m_parametersSeen;
      case Member::direction:
        return !m_items.back().direction;
      default:
        return m_items.back().value.index() == 0;
    }
  }

  Place m_place = Place::outside;
  Member m_member = Member::none;  // whose value comes next
  std::optional<std::string> m_name;
  std::optional<int> m_type;
  bool m_parametersSeen = false;
  std::vector<Item> m_items;
};

}  // namespace

void JsonCodec::encode(Method& method, std::iostream& stream) {
  OrderedJson parameters = OrderedJson::array();
  for (const Parameter& parameter : method.getParameters()) {
    parameters.push_back({{"name", parameter.getName()},
                          {"direction", parameter.getDirection()},
                          {"value", valueOf(parameter)}});
  }
  const OrderedJson whole = {
      {"name", method.getName()}, {"type", method.getType()}, {"parameters", parameters}};
  stream << whole.dump(-1, ' ', false, OrderedJson::error_handler_t::replace);
}

bool JsonCodec::decode(std::iostream& stream, Method& method) {
  const std::optional<std::string> bytes = readToEnd(stream);
  if (!bytes) return false;
  // JSON has no NUL. The library would take one for the end and ignore the rest.
  if (bytes->find('\0') != std::string::npos) return false;
  MethodReader reader;
  return nlohmann::json::sax_parse(*bytes, &reader) && reader.finish(method);
}

}  // namespace host
