#pragma once

#include <array>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "verbs/Json.h"

namespace host {

class WordReader;

// One word after a verb: its text in the usage line, and the request's member that it becomes;
// null: `read` returns an object of such members. A null that is read is left out.
struct VerbWord {
  std::string_view usage;  // "KEY", "up|down"; empty: no word
  const char* member;
  Json (*read)(WordReader& words, std::string_view usage);  // see VerbWords.h
};
using VerbWords = std::array<VerbWord, 2>;

// What a verb's second word chooses: `speed` in `clock speed X`.
struct VerbAction {
  std::string_view name;
  std::string_view help;
  VerbWords words{};
  bool takesTime = false;  // virtual time passes before the answer
};

// One row of the table of verbs: what a person types, and how the answer is shown.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order that a reader needs
struct Verb {
  enum class Route {
    call,      // a remote call to the service
    watch,     // the service's events
    host,      // no request: the host answers at the call socket
    control,   // a control request to the host, see operator/HostActions.h
    record,    // a file of clockctl, from the stream of `monitor`
    stream,    // a control request whose answers are items, until the client disconnects
    catalogue  // answered without a host, see CatalogueAnswers.h
  };

  std::string_view name;
  std::string_view help;

  // Writes an answer ("ok" is true) or one item of a stream as lines for people.
  void (*print)(const Json& answer, std::ostream& out);

  VerbWords words{};
  Route route = Route::control;

  // For verbs with actions, and the request's member that names the action.
  const char* actionMember = nullptr;
  std::span<const VerbAction> actions{};
  bool actionOptional = false;  // without an action, the first of them is meant
};

[[nodiscard]] std::span<const Verb> allVerbs();
[[nodiscard]] const Verb* findVerb(std::string_view name);  // null: unknown

// The verb among words as split by a shell: the first one. Throws UsageError: no word, or an
// unknown verb, with the nearest named.
[[nodiscard]] const Verb& verbOf(std::span<const std::string> words);

// The request for these words, {"verb": NAME, ...}. Throws UsageError: wrong arguments.
// REQUIRES: verbOf(words) is this verb.
[[nodiscard]] Json requestOf(const Verb& verb, std::span<const std::string> words);

// Whether virtual time passes before the answer to this request, which may then take long.
[[nodiscard]] bool takesTime(const Verb& verb, const Json& request);

// "clock [ACTION]", "clock jump UTC".
[[nodiscard]] std::string verbUsage(const Verb& verb);
[[nodiscard]] std::string actionUsage(const Verb& verb, const VerbAction& action);

// What a word of the usages may be: DURATION, or a landmark.
struct WordForm {
  std::string word;
  std::string meaning;
};
[[nodiscard]] std::vector<WordForm> wordForms();

// The usage lines of all verbs, or of one, and of their actions, with their help; then the forms of
// the words in them.
[[nodiscard]] std::string verbHelp();
[[nodiscard]] std::string verbHelp(const Verb& verb);

// The same of one verb for programs: `verb`, `usage`, `meaning`, and `actions`, an array of `usage`
// and `meaning`, if it has any.
[[nodiscard]] Json verbJson(const Verb& verb);

}  // namespace host
