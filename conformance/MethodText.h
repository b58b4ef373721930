#pragma once

#include <string>

#include "Method.h"

namespace conformance {

// "call NAME IN-PARAMETER=VALUE ... -> OUT-PARAMETER=VALUE": for comparisons and their messages.
inline std::string textOf(const Method& method) {
  std::string text = (method.getType() == Method::reply ? "reply " : "call ") + method.getName();
  for (const Parameter& parameter : method.getParameters()) {
    text += (parameter.getDirection() == Parameter::out ? " ->" : " ") + parameter.getName() + "=";
    switch (parameter.getType()) {
      case Parameter::integer:
        text += std::to_string(parameter.getInt());
        break;
      case Parameter::text:
        text += "'" + parameter.getString() + "'";
        break;
      case Parameter::boolean:
        text += parameter.getBool() ? "true" : "false";
        break;
    }
  }
  return text;
}

}  // namespace conformance
