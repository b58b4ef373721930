// The words of clockctl, one per line: they make a request that can be sent, or are refused in one
// line. An argument of a call has the name, type and value that were typed.

#include <nlohmann/json.hpp>
#include <vector>

#include "fuzz/Property.h"
#include "verbs/CallWords.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace {

using fuzz::hold;

using Words = std::vector<std::string>;

void holdRefusal(const host::UsageError& error) {
  hold(fuzz::isShortLine(error.what()), "a refusal is one line", error.what());
}

void holdRequest(const Words& words) {
  try {
    const host::Json request = host::requestOf(host::verbOf(words), words);
    const host::Json sent = host::Json::parse(request.dump());
    hold(sent == request, "a request can be sent unchanged", words.front());
    hold(request.at("verb") == words.front(), "a request has the verb that was typed",
         words.front());
  } catch (const host::UsageError& error) {
    holdRefusal(error);
  }
}

std::string argumentText(const Parameter& parameter) {
  const bool number = parameter.getType() == Parameter::integer;
  return parameter.getName() + (number ? ":int=" : ":string=") + host::valueText(parameter);
}

void holdArgument(const std::string& word) {
  try {
    const Parameter parameter = host::parseArgument(word);
    const Parameter again = host::parseArgument(argumentText(parameter));
    hold(again.getName() == parameter.getName() && again.getType() == parameter.getType() &&
             host::valueText(again) == host::valueText(parameter),
         "a printed argument can be read back", word);
    hold(!parameter.getName().empty(), "an argument has a name", word);
  } catch (const host::UsageError& error) {
    holdRefusal(error);
  }
}

}  // namespace

void fuzz::property(std::string_view input) {
  Reader lines(input);
  Words words;
  while (!lines.atEnd()) words.push_back(expanded(lines.line()));
  if (words.empty()) words.emplace_back();
  holdRequest(words);
  for (const std::string& word : words) holdArgument(word);
}
