#include "verbs/Verb.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/Ascii.h"
#include "base/PrintableText.h"
#include "verbs/DidYouMean.h"
#include "verbs/Landmarks.h"
#include "verbs/NamedRows.h"
#include "verbs/TimeText.h"
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

// A line for each action: "      clock jump UTC  set the wall clock". The texts are aligned.
std::string actionHelp(const Verb& verb) {
  std::vector<std::string> usages;
  std::size_t longest = 0;
  for (const VerbAction& action : verb.actions) {
    usages.push_back(actionUsage(verb, action));
    longest = std::max(longest, usages.back().size());
  }
  std::string help;
  for (std::size_t i = 0; i < usages.size(); ++i) {
    usages[i].resize(longest, ' ');
    help.append("      ").append(usages[i]).append("  ").append(verb.actions[i].help) += '\n';
  }
  return help;
}

std::string verbEntry(const Verb& verb) {
  return "  " + verbUsage(verb) + "\n      " + std::string(verb.help) + '\n' + actionHelp(verb);
}

bool hasWord(const std::string& text, const std::string& word) {
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    if (!isLetter(text[at - 1]) && (end == text.size() || !isLetter(text[end]))) return true;
  }
  return false;
}

// The help for these entries, each of which begins with a space, and for the words in them.
std::string withForms(const std::string& entries) {
  std::string forms;
  for (const auto& [word, meaning] : wordForms()) {
    if (hasWord(entries, word)) {
      forms.append("  ").append(word).append(" is ").append(meaning).append("\n");
    }
  }
  return forms.empty() ? entries : entries + "\nWords:\n" + forms;
}

void read(const VerbWords& expected, WordReader& words, Json& request) {
  for (const VerbWord& word : expected) {
    if (word.usage.empty()) continue;
    Json value = word.read(words, word.usage);
    if (word.member == nullptr) {
      request.update(value);
    } else if (!value.is_null()) {
      request[word.member] = std::move(value);
    }
  }
}

const VerbAction& readAction(const Verb& verb, WordReader& words) {
  if (verb.actionOptional && words.done()) return verb.actions.front();
  return *rowNamed(verb.actions, words.choice(namesOf(verb.actions)));
}

}  // namespace

std::span<const Verb> allVerbs() {
  return kVerbs;
}

const Verb* findVerb(std::string_view name) {
  return rowNamed(kVerbs, name);
}

const Verb& verbOf(std::span<const std::string> words) {
  if (words.empty()) throw UsageError("a verb is missing; `clockctl --help` lists them");
  const std::string& name = words.front();
  if (const Verb* const verb = findVerb(name)) return *verb;
  throw UsageError("unknown verb " + quotedText(name) +
                   suggestion(name, namesOf(kVerbs), "; `clockctl --help` lists the verbs"));
}

Json requestOf(const Verb& verb, std::span<const std::string> words) {
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

bool takesTime(const Verb& verb, const Json& request) {
  if (verb.actions.empty()) return false;
  const auto* action = rowNamed(verb.actions, request.at(verb.actionMember).get<std::string>());
  return action != nullptr && action->takesTime;
}

std::string verbUsage(const Verb& verb) {
  const char* const action = verb.actionOptional ? " [ACTION]" : " ACTION";
  return usageOf(verb.name, verb.words) + (verb.actions.empty() ? "" : action);
}

std::string actionUsage(const Verb& verb, const VerbAction& action) {
  return std::string(verb.name) + ' ' + usageOf(action.name, action.words);
}

std::vector<WordForm> wordForms() {
  std::vector<WordForm> forms = {
      {"X", std::string(kSpeedForms) + ": virtual seconds in each real second"},
      {"DURATION", std::string(kDurationForms) + ", or exactly `2.5s`, up to a century"},
      {"UTC", std::string(kInstantForms)},
      {"TIME", std::string(kLocalForms) + ", in the telephone's zone"}};
  for (const Landmark& landmark : landmarks()) {
    forms.push_back({std::string(landmark.name), std::string(landmark.meaning)});
  }
  return forms;
}

std::string verbHelp() {
  std::string help;
  for (const Verb& verb : kVerbs) help += verbEntry(verb);
  return withForms(help);
}

std::string verbHelp(const Verb& verb) {
  return withForms(verbEntry(verb));
}

Json verbJson(const Verb& verb) {
  Json json = {{"verb", verb.name}, {"usage", verbUsage(verb)}, {"meaning", verb.help}};
  for (const VerbAction& action : verb.actions) {
    json["actions"].push_back({{"usage", actionUsage(verb, action)}, {"meaning", action.help}});
  }
  return json;
}

}  // namespace host
