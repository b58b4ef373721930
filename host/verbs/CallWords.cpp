#include "verbs/CallWords.h"

#include <charconv>

#include "base/PrintableText.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

int requiredInteger(std::string_view word, std::string_view value) {
  const std::optional<int> number = parseInteger(value);
  if (!number) {
    throw UsageError(quotedText(word) + ": the value must be a decimal integer of 32 bits");
  }
  return *number;
}

void append(Method& method, const Parameter& argument) {
  const char* const name = argument.getName().c_str();
  if (argument.getType() == Parameter::integer) {
    method.addIntParameter(name, argument.getInt(), Parameter::in);
  } else {
    method.addStringParameter(name, argument.getString(), Parameter::in);
  }
}

}  // namespace

std::optional<int> parseInteger(std::string_view text) {
  int value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

Parameter parseArgument(std::string_view word) {
  const std::size_t equals = word.find('=');
  if (equals == std::string_view::npos || equals == 0 || word.front() == ':') {
    throw UsageError(quotedText(word) +
                     " is not an argument; write NAME=VALUE, NAME:int=VALUE or " +
                     "NAME:string=VALUE");
  }
  const std::string_view left = word.substr(0, equals);
  const std::string value(word.substr(equals + 1));
  const std::size_t colon = left.find(':');
  const std::string name(left.substr(0, colon));
  const std::string_view type =
      colon == std::string_view::npos ? std::string_view() : left.substr(colon);
  if (type == ":int") return {name, Parameter::in, requiredInteger(word, value)};
  if (type == ":string") return {name, Parameter::in, value};
  if (!type.empty()) {
    throw UsageError(quotedText(word) + ": unknown type " + quotedText(type.substr(1)) +
                     "; the types are int and string");
  }
  if (const std::optional<int> number = parseInteger(value)) return {name, Parameter::in, *number};
  return {name, Parameter::in, value};
}

Method callOf(const std::string& method, std::span<const std::string> arguments) {
  Method call(method.c_str(), Method::call);
  for (const std::string& word : arguments) append(call, parseArgument(word));
  return call;
}

std::string valueText(const Parameter& parameter) {
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

std::string parametersText(const Method& method) {
  std::string text;
  for (const Parameter& parameter : method.getParameters()) {
    if (!text.empty()) text += ' ';
    text += parameter.getName() + '=' + valueText(parameter);
  }
  return text;
}

}  // namespace host
