#pragma once

#include <string>

#include "Method.h"

namespace host {

// A Method in one line, such as "setTime/0 setTimeHours/0=8": name/type, then each parameter as
// name/direction=value.
inline std::string textOf(const Method& method) {
  std::string text = method.getName() + '/' + std::to_string(method.getType());
  for (const Parameter& parameter : method.getParameters()) {
    text += ' ' + parameter.getName() + '/' + std::to_string(parameter.getDirection()) + '=';
    switch (parameter.getType()) {
      case Parameter::integer:
        text += std::to_string(parameter.getInt());
        break;
      case Parameter::text:
        text += '"' + parameter.getString() + '"';
        break;
      case Parameter::boolean:
        text += parameter.getBool() ? "true" : "false";
        break;
    }
  }
  return text;
}

}  // namespace host
