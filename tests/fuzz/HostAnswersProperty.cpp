// What clockctl prints of a host's answers: the first line of the input is the verb, the second the
// answer. Whatever the answer holds, it is printed or refused with an exception that has a text.

#include <nlohmann/json.hpp>
#include <sstream>

#include "fuzz/Property.h"
#include "verbs/Verb.h"

void fuzz::property(std::string_view input) {
  Reader lines(input);
  const host::Verb* const verb = host::findVerb(lines.line());
  const host::Json answer = host::Json::parse(grown(lines.rest()), nullptr, false);
  if (verb == nullptr || !answer.is_object()) return;
  std::ostringstream out;
  try {
    verb->print(answer, out);
  } catch (const host::Json::exception& error) {
    hold(isShortLine(error.what()), "a refusal is one line", error.what());
    return;
  }
  const std::string text = out.str();
  hold(text.empty() || text.back() == '\n', "what is printed ends its line", text);
}
