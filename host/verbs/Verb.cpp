#include "verbs/Verb.h"

#include <nlohmann/json.hpp>

#include "base/PrintableText.h"
#include "verbs/DidYouMean.h"
#include "verbs/NamedRows.h"
#include "verbs/UsageError.h"
#include "verbs/VerbTable.h"
#include "verbs/WordReader.h"

namespace host {
namespace {

std::string usageOf(std::string_view name, const VerbWords& words) {
  std::string usage(name);
  for (const VerbWord& word : words) {
    if (!word.usage.empty()) usage.append(1, ' ').append(word.usage);
  }
  return usage;
}

// "clock [show | speed X | ...]"
std::string usageOf(const Verb& verb) {
  if (verb.actions.empty()) return usageOf(verb.name, verb.words);
  std::string actions;
  for (const VerbAction& action : verb.actions) {
    actions += (actions.empty() ? "" : " | ") + usageOf(action.name, action.words);
  }
  return std::string(verb.name) + (verb.actionOptional ? " [" + actions + "]" : " " + actions);
}

void read(const VerbWords& expected, WordReader& words, Json& request) {
  for (const VerbWord& word : expected) {
    if (!word.usage.empty()) request[word.member] = word.read(words, word.usage);
  }
}

const VerbAction& readAction(const Verb& verb, WordReader& words) {
  if (verb.actionOptional && words.done()) return verb.actions.front();
  return *rowNamed(verb.actions, words.choice(namesOf(verb.actions)));
}

const Verb& verbNamed(const std::string& name) {
  if (const Verb* const verb = findVerb(name)) return *verb;
  throw UsageError("unknown verb " + quotedText(name) +
                   suggestion(name, namesOf(kVerbs), "; `clockctl --help` lists the verbs"));
}

}  // namespace

const Verb* findVerb(std::string_view name) {
  return rowNamed(kVerbs, name);
}

Json requestOf(std::span<const std::string> words) {
  if (words.empty()) throw UsageError("a verb is missing; `clockctl --help` lists them");
  const Verb& verb = verbNamed(words.front());
  const std::string usage = usageOf(verb);
  WordReader reader(words.subspan(1), usage);
  Json request = {{"verb", verb.name}};
  if (!verb.actions.empty()) {
    const VerbAction& action = readAction(verb, reader);
    request[verb.actionMember] = action.name;
    reader.setSubject(words.front() + ' ' + std::string(action.name));
    read(action.words, reader, request);
  }
  read(verb.words, reader, request);
  reader.end();
  return request;
}

bool takesTime(const Json& request) {
  const Verb* const verb = findVerb(request.value("verb", std::string()));
  if (verb == nullptr || verb->actions.empty()) return false;
  const auto* action = rowNamed(verb->actions, request.value(verb->actionMember, std::string()));
  return action != nullptr && action->takesTime;
}

std::string verbHelp() {
  std::string help;
  for (const Verb& verb : kVerbs) {
    help += "  " + usageOf(verb) + "\n      " + std::string(verb.help) + '\n';
  }
  return help;
}

}  // namespace host
