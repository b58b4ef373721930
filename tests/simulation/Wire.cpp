#include "simulation/Wire.h"

namespace simulation {

void putField(std::string& bytes, const std::string& field) {
  bytes += std::to_string(field.size()) + ":" + field;
}

std::string wireOf(const Step& call) {
  std::string bytes;
  putField(bytes, call.texts[0]);
  putField(bytes, "0");
  for (const Argument& argument : call.arguments) {
    putField(bytes, argument.name);
    putField(bytes, "0");
    putField(bytes, argument.isText ? "text" : "integer");
    putField(bytes, argument.isText ? argument.text : std::to_string(argument.number));
  }
  return bytes;
}

}  // namespace simulation
