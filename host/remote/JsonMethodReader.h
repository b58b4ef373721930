#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Method.h"

namespace host {

// Receives a JSON parser's events for the members of a Method. A refusal (false) ends the parse, so
// that nested input costs nothing. Owner: the codec, for one text. Thread: one.
class JsonMethodReader : public nlohmann::json_sax<nlohmann::json> {
 public:
  // After a complete parse: fills `method`. False, leaving it unchanged, if a member is missing.
  [[nodiscard]] bool finish(Method& method) const;

  bool null() override { return false; }
  bool boolean(bool value) override;
  bool number_integer(number_integer_t number) override;
  bool number_unsigned(number_unsigned_t number) override;
  bool number_float(number_float_t, const string_t&) override { return false; }
  bool string(string_t& text) override;
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override;
  bool key(string_t& name) override;
  bool end_object() override;
  bool start_array(std::size_t) override;
  bool end_array() override;
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
    return false;
  }

 private:
  enum class Place { outside, method, list, parameter };
  enum class Member { none, name, type, parameters, direction, value };

  struct Item {
    std::optional<std::string> name;
    std::optional<int> direction;
    std::variant<std::monostate, int, bool, std::string> value;
  };

  bool integer(std::int64_t number);
  [[nodiscard]] bool isNew(Member member) const;
  static void add(Method& method, const Item& item);

  Place m_place = Place::outside;
  Member m_member = Member::none;  // whose value comes next
  std::optional<std::string> m_name;
  std::optional<int> m_type;
  bool m_listSeen = false;
  std::vector<Item> m_items;
};

}  // namespace host
