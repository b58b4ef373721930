// The words of clockctl, a line each: they are a request that can be sent, or one line says what
// was wrong. An argument of a call means what it says.

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
    const host::Json request = host::requestOf(words);
    const host::Json sent = host::Json::parse(request.dump());
    hold(sent == request, "a request is sent as it is", words.front());
    hold(request.at("verb") == words.front(), "a request has its verb", words.front());
  } catch (const host::UsageError& error) {
    holdRefusal(error);
  }
}

std::string typed(const Parameter& parameter) {
  const bool number = parameter.getType() == Parameter::integer;
  return parameter.getName() + (number ? ":int=" : ":string=") + host::valueText(parameter);
}

void holdArgument(const std::string& word) {
  try {
    const Parameter parameter = host::parseArgument(word);
    const Parameter again = host::parseArgument(typed(parameter));
    hold(again.getName() == parameter.getName() && again.getType() == parameter.getType() &&
             host::valueText(again) == host::valueText(parameter),
         "an argument is read back the same", word);
    hold(!parameter.getName().empty(), "an argument has a name", word);
  } catch (const host::UsageError& error) {
    holdRefusal(error);
  }
}

}  // namespace

void fuzz::property(std::string_view input) {
  Reader lines(input);
  Words words;
  while (!lines.atEnd()) words.push_back(grown(lines.line()));
  if (words.empty()) words.emplace_back();
  holdRequest(words);
  for (const std::string& word : words) holdArgument(word);
}
