#include <algorithm>

#include "manual/Completion.h"

namespace host {
namespace {

// For a text between single quotes of a shell.
std::string shellQuoted(std::string_view text) {
  std::string out = "'";
  for (const char letter : text) {
    if (letter == '\'') out += "'\\'";
    out += letter;
  }
  return out + '\'';
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

std::string wordsText(const std::vector<Candidate>& words) {
  return joined(words, " ", [](const Candidate& candidate) { return candidate.word; });
}

std::string optionNames(const ProgramWords& program) {
  return joined(program.options, " ",
                [](const Option& option) { return std::string(option.name); });
}

// "--socket | --timeout": the options that have a value.
std::string valueOptions(const ProgramWords& program) {
  return joined(program.options, " | ", [](const Option& option) {
    return option.value.empty() ? "" : std::string(option.name);
  });
}

// "clock to" as a pattern of `case`; a "*" stays one.
std::string pattern(const std::string& arguments) {
  std::string out;
  for (const char letter : arguments) {
    if (letter == ' ') out += '\\';
    out += letter;
  }
  return out.empty() ? "''" : out;
}

bool takesPath(const Option& option) {
  return option.value.find("FILE") == 0 || option.value.find("DIR") == 0;
}

// What follows an option with a value: the listed ones, files, or nothing that is known.
std::string bashValue(const Option& option) {
  if (option.value.empty()) return "";
  const auto listed = listedValues(option.value);
  const std::string words =
      joined(listed, " ", [](std::string_view word) { return std::string(word); });
  const std::string reply = takesPath(option)
                                ? "compgen -f -- \"$word\""
                                : "compgen -W " + shellQuoted(words) + " -- \"$word\"";
  return "    " + std::string(option.name) + ") mapfile -t COMPREPLY < <(" + reply +
         "); return ;;\n";
}

std::string described(const Candidate& candidate) {
  std::string word;
  for (const char letter : candidate.word) word.append(letter == ':' ? "\\" : "") += letter;
  return shellQuoted(candidate.help.empty() ? word : word + ':' + candidate.help);
}

std::string described(const Option& option) {
  return described(Candidate{std::string(option.name), std::string(option.help)});
}

}  // namespace

std::string bashCompletion(const ProgramWords& program) {
  const std::string& name = program.name;
  std::string text = "# bash completion for " + name + "; generated\n_" + name +
                     "() {\n  local word=${COMP_WORDS[COMP_CWORD]} i words= typed=()\n"
                     "  case ${COMP_WORDS[COMP_CWORD - 1]} in\n";
  for (const Option& option : program.options) text += bashValue(option);
  text +=
      "  esac\n  for ((i = 1; i < COMP_CWORD; i++)); do\n    case ${COMP_WORDS[i]} in\n      " +
      valueOptions(program) +
      ") ((i++)) ;;\n      -*) ;;\n      *) typed+=(\"${COMP_WORDS[i]}\") ;;\n    esac\n  done\n"
      "  case \"${typed[*]}\" in\n";
  for (const Position& position : program.positions) {
    text += "    " + pattern(position.arguments) +
            ") words=" + shellQuoted(wordsText(position.words)) + " ;;\n";
  }
  return text + "  esac\n  [[ $word != -* ]] || words+=' " + optionNames(program) +
         "'\n  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n}\ncomplete -o "
         "default -F _" +
         name + ' ' + name + '\n';
}

std::string zshCompletion(const ProgramWords& program) {
  const std::string& name = program.name;
  const auto describe = [](const auto& row) { return described(row); };
  std::string text = "#compdef " + name + "\n# zsh completion for " + name +
                     "; generated\nlocal -a options found typed\nlocal i\noptions=(" +
                     joined(program.options, " ", describe) + ")\ncase ${words[CURRENT - 1]} in\n";
  for (const Option& option : program.options) {
    if (option.value.empty()) continue;
    const std::string words = joined(listedValues(option.value), " ",
                                     [](std::string_view word) { return std::string(word); });
    text += "  " + std::string(option.name) + ") " +
            (takesPath(option) ? "_files"
             : words.empty()   ? "_message value"
                               : "compadd -- " + words) +
            "; return ;;\n";
  }
  text += "esac\nfor ((i = 2; i < CURRENT; i++)); do\n  case ${words[i]} in\n    " +
          valueOptions(program) + ") ((i++)) ;;\n    -*) ;;\n    *) typed+=(\"${words[i]}\") ;;\n" +
          "  esac\ndone\ncase \"${typed[*]}\" in\n";
  for (const Position& position : program.positions) {
    text += "  " + pattern(position.arguments) + ") found=(" +
            joined(position.words, " ", describe) + ") ;;\n";
  }
  return text +
         "esac\nif [[ $PREFIX == -* ]]; then found+=($options); fi\n"
         "if (( $#found )); then _describe word found; else _files; fi\n";
}

std::string fishCompletion(const ProgramWords& program) {
  const std::string& name = program.name;
  std::string text =
      "# fish completion for " + name + "; generated\nfunction __" + name +
      "_at\n  set -l typed\n  set -l skip 0\n"
      "  for word in (commandline -opc)[2..-1]\n    if test $skip = 1\n      set skip 0\n"
      "    else if contains -- $word " +
      joined(program.options, " ",
             [](const Option& option) {
               return option.value.empty() ? "" : std::string(option.name);
             }) +
      "\n      set skip 1\n    else if not string match -q -- '-*' $word\n"
      "      set -a typed $word\n    end\n  end\n"
      "  string match -q -- $argv[1] \"$typed\"\nend\n";
  for (const Option& option : program.options) {
    const std::string words = joined(listedValues(option.value), " ",
                                     [](std::string_view word) { return std::string(word); });
    text += "complete -c " + name + " -l " + std::string(option.name.substr(2)) +
            (option.value.empty() ? ""
             : takesPath(option)  ? " -r -F"
                                  : " -x") +
            (words.empty() ? "" : " -a " + shellQuoted(words)) + " -d " + shellQuoted(option.help) +
            '\n';
  }
  for (const Position& position : program.positions) {
    for (const Candidate& candidate : position.words) {
      text += "complete -c " + name + " -f -n " +
              shellQuoted("__" + name + "_at \"" + position.arguments + '"') + " -a " +
              shellQuoted(candidate.word) +
              (candidate.help.empty() ? "" : " -d " + shellQuoted(candidate.help)) + '\n';
    }
  }
  return text;
}

}  // namespace host
