#include "apps/ClockCtlOptions.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "apps/OptionParser.h"
#include "remote/SocketAddress.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace host {
namespace {

constexpr double kLongestTimeout = 86400;  // seconds

bool isFlag(const std::string& word) {
  return word == "--json" || word == "--help" || word == "-h" || word == "--version";
}

constexpr std::array<std::string_view, 3> kWithValue = {"--socket", "--control-socket",
                                                        "--timeout"};

bool takesValue(const std::string& word) {
  return std::find(kWithValue.begin(), kWithValue.end(), word) != kWithValue.end();
}

bool holdsValue(const std::string& word) {
  const std::size_t equals = word.find('=');
  return equals != std::string::npos && takesValue(word.substr(0, equals));
}

// Options, and the verb with its arguments. An argument may look like an option: "-5".
struct SortedWords {
  std::vector<std::string> options;
  std::vector<std::string> verb;
};

SortedWords sorted(std::span<const std::string> words) {
  SortedWords result;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--") {
      result.verb.insert(result.verb.end(), words.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                         words.end());
      break;
    }
    const bool unknown = result.verb.empty() && word.starts_with('-');
    if (isFlag(word) || takesValue(word) || holdsValue(word) || unknown) {
      result.options.push_back(word);
      if (takesValue(word) && i + 1 < words.size()) result.options.push_back(words[++i]);
    } else {
      result.verb.push_back(word);
    }
  }
  return result;
}

std::optional<std::chrono::milliseconds> limitOf(std::optional<double> timeout) {
  if (!timeout) return std::nullopt;
  if (!(*timeout > 0 && *timeout <= kLongestTimeout)) {
    throw UsageError("--timeout takes seconds, more than 0 and up to 86400");
  }
  return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(*timeout));
}

}  // namespace

std::optional<ClockCtlOptions> readClockCtlOptions(std::span<const std::string> words,
                                                   const std::filesystem::path& defaultSocket,
                                                   std::ostream& out) {
  SortedWords split = sorted(words);
  if (split.verb == std::vector<std::string>{"help"}) split = {{"--help"}, {}};
  ClockCtlOptions options{defaultSocket, {}, false, std::nullopt, std::move(split.verb)};
  std::optional<double> timeout;
  OptionParser parser("clockctl", "Controls a running clockhost.", "VERB [ARGUMENTS]");
  parser.footer("Verbs:\n" + verbHelp());
  parser.addPath("--socket", options.socket, "Socket for the verbs call and watch");
  parser.addPath("--control-socket", options.controlSocket, "Socket for all other verbs")
      ->default_str("--socket with \".control\" appended");
  parser.add_flag("--json", options.json, "Print answers as JSON, one object on each line");
  parser.add_option("--timeout", timeout, "How long to wait for a reply")
      ->type_name("SECONDS")
      ->default_str("2 for call and watch, 60 for clock advance and to, else 5");
  if (!parser.read(split.options, out)) return std::nullopt;
  if (options.controlSocket.empty()) options.controlSocket = controlSocketBeside(options.socket);
  options.timeout = limitOf(timeout);
  return options;
}

}  // namespace host
