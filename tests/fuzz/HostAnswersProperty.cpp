// The output of clockctl for a host's answer: the first line of the input is the verb, the rest the
// answer. Any answer is printed, or refused with an exception whose text is one line.

#include <nlohmann/json.hpp>
#include <sstream>

#include "fuzz/Property.h"
#include "verbs/Verb.h"

void fuzz::property(std::string_view input) {
  Reader lines(input);
  const host::Verb* const verb = host::findVerb(lines.line());
  const host::Json answer = host::Json::parse(expanded(lines.rest()), nullptr, false);
  if (verb == nullptr || !answer.is_object()) return;
  std::ostringstream out;
  try {
    verb->print(answer, out);
  } catch (const host::Json::exception& error) {
    hold(isShortLine(error.what()), "a refusal is one line", error.what());
    return;
  }
  const std::string text = out.str();
  hold(text.empty() || text.back() == '\n', "output ends with a line end", text);
}
