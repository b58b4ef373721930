#pragma once

#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

#include "verbs/Json.h"

namespace host {

class WordReader;

// One row of the table of verbs: what a person types, and how an answer reads.
struct Verb {
  enum class Route {
    call,    // a remote call to the service
    watch,   // the service's events
    control  // a control request to the host
  };

  std::string_view name;
  std::string_view usage;  // "get KEY"
  std::string_view help;
  Route route;

  // Reads the words after the verb into the request's members. Throws UsageError.
  void (*read)(WordReader& words, Json& request);

  // Writes an answer ("ok" is true) or one item of a stream as lines for people.
  void (*print)(const Json& answer, std::ostream& out);
};

// All verbs, in the order of the help.
[[nodiscard]] std::span<const Verb> verbs();
[[nodiscard]] const Verb* findVerb(std::string_view name);  // null: unknown

// words: verb and arguments, as split by a shell. The request is {"verb": NAME, ...}. Throws
// UsageError: no verb, an unknown one with the nearest named, wrong arguments.
[[nodiscard]] Json requestOf(std::span<const std::string> words);

// The usage lines of all verbs, with their help.
[[nodiscard]] std::string verbHelp();

}  // namespace host
