#include <utility>

#include "base/ReplaceAll.h"
#include "manual/Completion.h"
#include "verbs/Choices.h"

namespace host {
namespace {

// For a text between single quotes of a shell.
std::string shellQuoted(std::string_view text) {
  return '\'' + replaceAll(std::string(text), "'", "'\\''") + '\'';
}

template <typename Rows, typename Text>
std::string joined(const Rows& rows, const char* separator, Text text) {
  std::string out;
  for (const auto& row : rows) {
    const std::string one = text(row);
    if (!one.empty()) out += (out.empty() ? "" : separator) + one;
  }
  return out;
}

// "--file | -f"
std::string namesOf(const Option& option, const char* separator) {
  const std::string letter(option.letter);
  return std::string(option.name) + (letter.empty() ? "" : separator + letter);
}

// The options that have a value.
std::string valueOptions(const ProgramWords& program, const char* separator) {
  return joined(program.options, separator, [&](const Option& option) {
    return option.value.empty() ? "" : namesOf(option, separator);
  });
}

// The values that the help lists.
std::string listedIn(const Option& option) {
  return joined(listedValues(option.value), " ",
                [](std::string_view word) { return std::string(word); });
}

// "clock to" as a pattern of `case`; a "*" stays one.
std::string pattern(const std::string& arguments) {
  return arguments.empty() ? "''" : replaceAll(arguments, " ", "\\ ");
}

bool takesPath(const Option& option) {
  return option.value.find("FILE") == 0 || option.value.find("DIR") == 0;
}

// "WORD:MEANING" for zsh.
std::string described(std::string_view word, std::string_view meaning) {
  const std::string text = replaceAll(std::string(word), ":", "\\:");
  return shellQuoted(meaning.empty() ? text : text + ':' + std::string(meaning));
}

std::string bashOption(const Option& option) {
  return ' ' + std::string(option.name);
}

// What follows an option with a value: listed ones, a path, or anything.
std::string bashValue(const Option& option) {
  if (option.value.empty()) return "";
  const std::string words = takesPath(option) ? "-f" : "-W " + shellQuoted(listedIn(option));
  return "    " + namesOf(option, " | ") + ") mapfile -t COMPREPLY < <(compgen " + words +
         " -- \"$word\"); return ;;\n";
}

std::string bashWords(const Position& position) {
  const std::string words =
      joined(position.words, " ", [](const Candidate& candidate) { return candidate.word; });
  return "    " + pattern(position.arguments) + ") words=" + shellQuoted(words) + " ;;\n";
}

std::string zshOption(const Option& option) {
  return ' ' + described(option.name, option.help);
}

std::string zshValue(const Option& option) {
  if (option.value.empty()) return "";
  const std::string words = listedIn(option);
  const std::string action = words.empty() ? "_message value" : "compadd -- " + words;
  return "  " + namesOf(option, " | ") + ") " + (takesPath(option) ? "_files" : action) +
         "; return ;;\n";
}

std::string zshWords(const Position& position) {
  const std::string words = joined(position.words, " ", [](const Candidate& candidate) {
    return described(candidate.word, candidate.help);
  });
  return "  " + pattern(position.arguments) + ") found=(" + words + ") ;;\n";
}

std::string fishOption(const Option& option) {
  const std::string words = listedIn(option);
  const char* const value = option.value.empty() ? "" : takesPath(option) ? " -r -F" : " -x";
  const std::string letter =
      option.letter.empty() ? "" : " -s " + std::string(option.letter.substr(1));
  return "complete -c @program@ -l " + std::string(option.name.substr(2)) + letter + value +
         (words.empty() ? "" : " -a " + shellQuoted(words)) + " -d " + shellQuoted(option.help) +
         '\n';
}

std::string fishWords(const Position& position) {
  const std::string at = "__@program@_at \"" + position.arguments + '"';
  return joined(position.words, "", [&](const Candidate& candidate) {
    return "complete -c @program@ -f -n " + shellQuoted(at) + " -a " + shellQuoted(candidate.word) +
           (candidate.help.empty() ? "" : " -d " + shellQuoted(candidate.help)) + '\n';
  });
}

constexpr const char* kBash = R"sh(# bash completion for @program@; generated
_@program@() {
  local word=${COMP_WORDS[COMP_CWORD]} i words= typed=()
  case ${COMP_WORDS[COMP_CWORD - 1]} in
@values@  esac
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      @valueOptions@) ((i++)) ;;
      -*) ;;
      *) typed+=("${COMP_WORDS[i]}") ;;
    esac
  done
  case "${typed[*]}" in
@words@  esac
  [[ $word != -* ]] || words+='@options@'
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
  [[ ${COMPREPLY-} != *= ]] || compopt -o nospace
}
complete -o default -F _@program@ @program@
)sh";

constexpr const char* kZsh = R"sh(#compdef @program@
# zsh completion for @program@; generated
local -a options found typed ending
local i
options=(@options@)
case ${words[CURRENT - 1]} in
@values@esac
for ((i = 2; i < CURRENT; i++)); do
  case ${words[i]} in
    @valueOptions@) ((i++)) ;;
    -*) ;;
    *) typed+=("${words[i]}") ;;
  esac
done
case "${typed[*]}" in
@words@esac
if [[ $PREFIX == -* ]]; then found+=($options); fi
if [[ ${found[1]%%:*} == *= ]]; then ending=(-S ''); fi
if (( $#found )); then _describe word found "${ending[@]}"; else _files; fi
)sh";

constexpr const char* kFish = R"sh(# fish completion for @program@; generated
function __@program@_at
  set -l typed
  set -l skip 0
  for word in (commandline -opc)[2..-1]
    if test $skip = 1
      set skip 0
    else if contains -- $word @valueOptions@
      set skip 1
    else if not string match -q -- '-*' $word
      set -a typed $word
    end
  end
  string match -q -- $argv[1] "$typed"
end
@values@@words@)sh";

// How a shell writes the words of a program.
struct Shell {
  std::string script;
  const char* separator;  // of the options that have a value
  std::string (*option)(const Option& option);
  std::string (*value)(const Option& option);
  std::string (*words)(const Position& position);
};

std::string completion(const Shell& shell, const ProgramWords& program) {
  const std::pair<std::string_view, std::string> values[] = {
      {"@options@", joined(program.options, "", shell.option)},
      {"@values@", joined(program.options, "", shell.value)},
      {"@valueOptions@", valueOptions(program, shell.separator)},
      {"@words@", joined(program.positions, "", shell.words)},
      {"@program@", program.name},
  };
  std::string text = shell.script;
  for (const auto& [name, value] : values) text = replaceAll(std::move(text), name, value);
  return text;
}

}  // namespace

std::string bashCompletion(const ProgramWords& program) {
  return completion({kBash, " | ", bashOption, bashValue, bashWords}, program);
}

std::string zshCompletion(const ProgramWords& program) {
  return completion({kZsh, " | ", zshOption, zshValue, zshWords}, program);
}

std::string fishCompletion(const ProgramWords& program) {
  return completion({kFish, " ", fishOption, fishOption, fishWords}, program);
}

}  // namespace host
