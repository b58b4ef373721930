#include "support/MethodText.h"

#include <sstream>
#include <vector>

#include "Method.h"

namespace {

std::string valueOf(const Parameter& parameter) {
  if (parameter.getType() == Parameter::integer) return std::to_string(parameter.getInt());
  if (parameter.getType() == Parameter::text) return parameter.getString();
  return parameter.getBool() ? "true" : "false";
}

const char* typeOf(const Parameter& parameter) {
  if (parameter.getType() == Parameter::integer) return "int ";
  return parameter.getType() == Parameter::text ? "string " : "bool ";
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Cuts the text at the first `separator`; false when there is none.
bool cut(const std::string& text, char separator, std::string& before, std::string& after) {
  const std::size_t at = text.find(separator);
  if (at == std::string::npos) return false;
  before = text.substr(0, at);
  after = text.substr(at + 1);
  return true;
}

bool addParameter(const std::string& line, Method& method) {
  std::string way, type, name, value, rest;
  if (!cut(line, ' ', way, rest) || !cut(rest, ' ', type, rest) || !cut(rest, '=', name, value))
    return false;
  const auto direction = way == "in" ? Parameter::in : Parameter::out;
  if (type == "int") {
    method.addIntParameter(name.c_str(), std::stoi(value), direction);
  } else if (type == "bool") {
    method.addBoolParameter(name.c_str(), value == "true", direction);
  } else {
    method.addStringParameter(name.c_str(), value, direction);
  }
  return true;
}

}  // namespace

std::string support::textOf(const Method& method) {
  std::string text = (method.getType() == Method::reply ? "reply " : "call ") + method.getName();
  text += '\n';
  for (const Parameter& parameter : method.getParameters()) {
    text += parameter.getDirection() == Parameter::out ? "out " : "in ";
    text += typeOf(parameter) + parameter.getName() + "=" + valueOf(parameter) + "\n";
  }
  return text;
}

bool support::methodOf(const std::string& text, Method& method) {
  const std::vector<std::string> lines = linesOf(text);
  std::string kind, name;
  if (lines.empty() || !cut(lines.front(), ' ', kind, name) || (kind != "call" && kind != "reply"))
    return false;
  Method read(name.c_str(), kind == "call" ? Method::call : Method::reply);
  for (std::size_t i = 1; i < lines.size(); ++i)
    if (!addParameter(lines[i], read)) return false;
  method = read;
  return true;
}

std::string support::lineOf(const Method& method) {
  std::string line = method.getName() + "/" + std::to_string(method.getType());
  for (const Parameter& parameter : method.getParameters()) {
    const char* const quote = parameter.getType() == Parameter::text ? "\"" : "";
    line += " " + parameter.getName() + "/" + std::to_string(parameter.getDirection()) + "=" +
            quote + valueOf(parameter) + quote;
  }
  return line;
}
