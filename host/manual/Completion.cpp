#include "manual/Completion.h"

#include "apps/ClockCtlOptions.h"
#include "apps/HostOptions.h"
#include "verbs/Choices.h"
#include "verbs/KeyCatalogue.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"
#include "verbs/Verb.h"

namespace host {
namespace {

std::vector<Candidate> candidates(const std::vector<std::string_view>& names) {
  std::vector<Candidate> words;
  for (const std::string_view name : names) words.push_back({std::string(name)});
  return words;
}

// "[--follow] [--for DURATION]": the options in it.
std::vector<Candidate> optionsIn(std::string_view usage) {
  std::vector<Candidate> words;
  for (std::size_t at = usage.find("--"); at != std::string_view::npos;
       at = usage.find("--", at + 2)) {
    words.push_back({std::string(usage.substr(at, usage.find_first_of(" ]|", at) - at))});
  }
  return words;
}

std::vector<Candidate> wordsFor(std::string_view usage) {
  if (usage == "KEY" || usage == "[KEY]" || usage == "KEY VALUE") {
    return candidates(namesOf(managementKeys()));
  }
  if (usage == "METHOD" || usage == "[METHOD]") return candidates(namesOf(remoteMethods()));
  auto words = candidates(listedValues(usage));
  if (usage.find("EVENT") != std::string_view::npos) words = candidates(namesOf(remoteEvents()));
  const auto options = optionsIn(usage);
  words.insert(words.end(), options.begin(), options.end());
  return words;
}

bool mayBeRepeated(std::string_view usage) {
  return usage.find("...") != std::string_view::npos;
}

void addWords(std::string arguments, const VerbWords& words, std::vector<Position>& positions) {
  for (const VerbWord& word : words) {
    if (word.usage.empty()) continue;
    const auto found = wordsFor(word.usage);
    if (!found.empty()) positions.push_back({arguments, found});
    arguments += " *";
    if (!found.empty() && mayBeRepeated(word.usage)) positions.push_back({arguments, found});
  }
}

// "NAME=" for the parameters of each method, after the method and after other parameters.
void addParameters(const std::string& verb, std::vector<Position>& positions) {
  for (const MethodRow& method : remoteMethods()) {
    std::vector<Candidate> names;
    for (const MethodParameter& parameter : method.request) {
      names.push_back({std::string(parameter.name) + '=', std::string(parameter.values)});
    }
    if (names.empty()) continue;
    const std::string arguments = verb + ' ' + std::string(method.name);
    positions.push_back({arguments, names});
    positions.push_back({arguments + " *", names});
  }
}

std::vector<Position> positionsOfVerbs() {
  std::vector<Position> positions;
  Position verbs{"", {{"help", "explain a verb"}}};
  for (const Verb& verb : allVerbs()) {
    const std::string name(verb.name);
    verbs.words.push_back({name, std::string(verb.help)});
    addWords(name, verb.words, positions);
    if (verb.route == Verb::Route::call) addParameters(name, positions);
    Position actions{name, {}};
    for (const VerbAction& action : verb.actions) {
      actions.words.push_back({std::string(action.name), std::string(action.help)});
      addWords(name + ' ' + std::string(action.name), action.words, positions);
    }
    if (!actions.words.empty()) positions.push_back(std::move(actions));
  }
  Position help = verbs;
  help.arguments = "help";
  help.words.erase(help.words.begin());
  positions.push_back(std::move(verbs));
  positions.push_back(std::move(help));
  return positions;
}

std::vector<Option> rows(const OptionParser& parser) {
  return {parser.options().begin(), parser.options().end()};
}

}  // namespace

ProgramWords hostWords() {
  HostOptions options;
  return {"clockhost", rows(hostOptionParser(options)), {}};
}

ProgramWords ctlWords() {
  ClockCtlOptions options;
  return {"clockctl", rows(clockCtlOptionParser(options)), positionsOfVerbs()};
}

}  // namespace host
