#include "apps/ClockCtlOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <string_view>

#include "base/PrintableText.h"
#include "remote/SocketAddress.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace host {
namespace {

constexpr const char* kDescription = "Controls a running clockhost: calls, management, clock, log.";
constexpr double kLongestTimeout = 86400;  // seconds
constexpr std::size_t kLongestComplaint =
    300;  // bytes of the library's words, which echo the person's

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

// The words sorted into options and the verb's own. A verb's words may look like options: "-5".
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

// CLI11 takes an empty text for "right".
std::string checkPath(const std::string& text) {
  return text.empty() ? "a path is wanted, not an empty text" : "";
}

std::string helpText(const CLI::App& app) {
  return app.help() + "Verbs:\n" + verbHelp();
}

}  // namespace

std::optional<ClockCtlOptions> readClockCtlOptions(std::span<const std::string> words,
                                                   const std::filesystem::path& defaultSocket,
                                                   std::ostream& out) {
  SortedWords split = sorted(words);
  ClockCtlOptions options{defaultSocket, {}, false, std::nullopt, std::move(split.verb)};
  std::optional<double> timeout;
  CLI::App app(kDescription, "clockctl");  // the verb's words never get here
  app.set_version_flag("--version", CLOCK_VERSION);
  // The last of two counts, so that a script's options can be overridden.
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.add_option("--socket", options.socket, "Where the host takes calls (call, watch)")
      ->type_name("FILE")
      ->capture_default_str()
      ->check(checkPath);
  app.add_option("--control-socket", options.controlSocket,
                 "Where it takes the other verbs; beside --socket, with \".control\" behind")
      ->type_name("FILE")
      ->check(checkPath);
  app.add_flag("--json", options.json, "Answers as JSON, one object a line");
  app.add_option("--timeout", timeout,
                 "How long to wait for a reply (calls 2, others 5, where time passes 60)")
      ->type_name("SECONDS");
  try {
    std::reverse(split.options.begin(), split.options.end());
    app.parse(split.options);
  } catch (const CLI::CallForHelp&) {
    out << helpText(app);
    return std::nullopt;
  } catch (const CLI::CallForVersion&) {
    out << CLOCK_VERSION << '\n';
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw UsageError(clippedText(error.what(), kLongestComplaint) +
                     "; `clockctl --help` lists options and verbs");
  }
  if (options.verb == std::vector<std::string>{"help"}) {
    out << helpText(app);
    return std::nullopt;
  }
  if (options.controlSocket.empty()) options.controlSocket = controlSocketBeside(options.socket);
  options.timeout = limitOf(timeout);
  return options;
}

}  // namespace host
