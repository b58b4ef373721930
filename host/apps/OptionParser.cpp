#include "apps/OptionParser.h"

#include <algorithm>
#include <charconv>
#include <ostream>
#include <utility>

#include "base/PrintableText.h"
#include "base/Version.h"
#include "verbs/Choices.h"
#include "verbs/DidYouMean.h"
#include "verbs/NamedRows.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

constexpr std::size_t kHelpColumn = 30;  // where the texts of the options begin

bool looksLikeOption(const std::string& word) {
  return word.size() > 1 && word.front() == '-';
}

std::string optionHelp(const Option& option) {
  std::string line = "  " + usageOf(option);
  line += std::string(line.size() < kHelpColumn ? kHelpColumn - line.size() : 1, ' ');
  line += option.help;
  if (!option.shownDefault.empty()) line += " (default: " + option.shownDefault + ')';
  return line + '\n';
}

}  // namespace

OptionParser::OptionParser(const Program& program) : m_program(program) {
  add({"--help", "", "Print this help and exit", {}}).letter = "-h";
  add({"--version", "", "Print the version and exit", {}});
}

Option& OptionParser::add(Option option) {
  return m_options.emplace_back(std::move(option));
}

Option& OptionParser::addFlag(std::string_view name, std::string_view help, bool& flag) {
  return add({name, "", help, [&flag](const std::string&) {
                flag = true;
                return std::string();
              }});
}

Option& OptionParser::addPath(std::string_view name, std::string_view help,
                              std::filesystem::path& path, std::string_view value) {
  return add({name, value, help,
              [&path](const std::string& text) {
                path = text;
                return checkPath(text);
              },
              path.string()});
}

OptionParser::Request OptionParser::read(Words words) {
  while (!words.empty()) readWord(words);
  return m_request;
}

bool OptionParser::readToRun(Words words, std::ostream& out) {
  const Request request = read(words);
  if (request != Request::run)
    out << (request == Request::help ? help() : kVersion + std::string("\n"));
  return request == Request::run;
}

void OptionParser::readWord(Words& words) {
  const std::string& word = words.front();
  words = words.subspan(1);
  if (word == "--") {
    m_arguments.insert(m_arguments.end(), words.begin(), words.end());
    words = {};
    if (!m_arguments.empty() && m_program.arguments.empty()) refuseUnknown(m_arguments.front());
  } else if (Option* const option = optionOf(word)) {
    readOption(*option, word, words);
  } else if (m_program.arguments.empty() || (m_arguments.empty() && looksLikeOption(word))) {
    refuseUnknown(word);
  } else {
    m_arguments.push_back(word);
  }
}

void OptionParser::readOption(Option& option, const std::string& word, Words& words) {
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos && !option.value.empty()) return readValues(option, words);
  if (equals != std::string::npos && option.value.empty()) {
    refuse(std::string(option.name) + " takes no value");
  }
  use(option, equals == std::string::npos ? "" : word.substr(equals + 1));
}

void OptionParser::readValues(Option& option, Words& words) {
  bool first = true;
  while (!words.empty() && words.front() != "--" && optionOf(words.front()) == nullptr &&
         (first || (option.manyValues && !looksLikeOption(words.front())))) {
    use(option, words.front());
    words = words.subspan(1);
    first = false;
  }
  if (!first) return;
  const std::string name(option.name);
  refuse(name + ": its value is missing; write " + name + ' ' + std::string(option.value));
}

void OptionParser::use(Option& option, const std::string& value) {
  option.given = true;
  const auto listed = listedValues(option.value);
  std::string error;
  if (!option.take) {
    m_request = option.name == "--help" ? Request::help : Request::version;
  } else if (!listed.empty() && std::find(listed.begin(), listed.end(), value) == listed.end()) {
    error = quotedText(value) + " is not " + alternatives(listed);
  } else {
    error = option.take(value);
  }
  if (!error.empty()) refuse(std::string(option.name) + ": " + error);
}

Option* OptionParser::optionOf(std::string_view word) {
  const std::string_view name = word.substr(0, word.find('='));
  const auto found = std::find_if(m_options.begin(), m_options.end(), [&](const Option& option) {
    return option.name == name || (!option.letter.empty() && option.letter == name);
  });
  return found == m_options.end() ? nullptr : &*found;
}

bool OptionParser::given(std::string_view name) const {
  return rowNamed(m_options, name)->given;
}

void OptionParser::refuse(const std::string& error) const {
  throw UsageError(error + "; `" + std::string(m_program.name) + " --help` lists the options");
}

void OptionParser::refuseUnknown(const std::string& word) const {
  if (!looksLikeOption(word)) refuse(quotedText(word) + " is not an option");
  const std::string name = word.substr(0, word.find('='));
  const std::string near = suggestion(name, namesOf(m_options));
  if (near.empty()) refuse("unknown option " + quotedText(name));
  throw UsageError("unknown option " + quotedText(name) + near);
}

std::string OptionParser::help() const {
  std::string text = std::string(m_program.description) +
                     "\n\nUsage: " + std::string(m_program.name) + " [OPTIONS]" +
                     (m_program.arguments.empty() ? "" : " ") + std::string(m_program.arguments) +
                     "\n\nOptions:\n";
  for (const Option& option : m_options) text += optionHelp(option);
  text += "\nExit status:\n";
  for (const auto& [status, meaning] : m_program.statuses) {
    text += "  " + std::to_string(status) + "  " + std::string(meaning) + '\n';
  }
  return text;
}

std::string readNumber(const std::string& text, std::uint64_t least, std::uint64_t most,
                       std::uint64_t& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end && number >= least && number <= most) return "";
  return quotedText(text) + " is not a whole number from " + std::to_string(least) + " to " +
         std::to_string(most);
}

std::string usageOf(const Option& option) {
  const std::string letter = option.letter.empty() ? "" : std::string(option.letter) + ", ";
  const std::string name = letter + std::string(option.name);
  return option.value.empty() ? name : name + ' ' + std::string(option.value);
}

std::string checkPath(const std::string& text) {
  return text.empty() ? "the path is empty; name a file or folder" : "";
}

}  // namespace host
