#include "apps/ClockCtlOptions.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "base/PrintableText.h"
#include "base/Version.h"
#include "remote/SocketAddress.h"
#include "verbs/JsonText.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace host {
namespace {

using std::chrono::milliseconds;

constexpr std::chrono::hours kLongestTimeout{24};

constexpr ExitStatus kStatuses[] = {
    {0, "done; also a call that is answered with false, on which a scenario fails"},
    {1, "refused, no reply, or standard output could not be written"},
    {2, "wrong command line"},
    {3, "no host at the socket"},
};

// A number of seconds, or a duration.
std::optional<milliseconds> parseTimeout(const std::string& text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return parseRealDuration(text);
  const std::chrono::duration<double> seconds(number);
  if (!(number > 0) || seconds > kLongestTimeout) return std::nullopt;
  return std::chrono::ceil<milliseconds>(seconds);
}

std::string takeTimeout(const std::string& text, ClockCtlOptions& options) {
  options.timeout = parseTimeout(text);
  if (options.timeout && *options.timeout <= kLongestTimeout) return "";
  return quotedText(text) + " is not a number of seconds, more than 0 and up to 86400, or a " +
         "duration: " + std::string(kRealDurationForms);
}

std::string takeWaitHost(const std::string& text, ClockCtlOptions& options) {
  options.waitHost = parseRealDuration(text);
  if (options.waitHost) return "";
  return quotedText(text) + " is not a duration: " + std::string(kRealDurationForms);
}

// The help that was asked for: of one verb, or of all.
std::string helpFor(std::span<const std::string> verb, const std::filesystem::path& defaultSocket) {
  if (!verb.empty()) return verbHelp(verbOf(verb));
  ClockCtlOptions options;
  options.socket = defaultSocket;
  return clockCtlOptionParser(options).help() + "\nVerbs:\n" + verbHelp();
}

// What `help` prints with --json.
std::string helpAsJson(std::span<const std::string> verb) {
  if (!verb.empty()) return jsonLine(verbJson(verbOf(verb))) + '\n';
  Json verbs = Json::array();
  for (const Verb& each : allVerbs()) verbs.push_back(verbJson(each));
  return jsonLine({{"verbs", std::move(verbs)}}) + '\n';
}

// Commands come from the command line or from a file.
void requireOneSource(const OptionParser& parser, const ClockCtlOptions& options) {
  const bool fromFile = parser.given("--file");
  if (fromFile && !options.verb.empty()) {
    throw UsageError("-f takes the commands from " + quotedText(options.file.string()) +
                     "; leave out " + quotedText(options.verb.front()));
  }
  if (!fromFile && options.keepGoing) throw UsageError("--keep-going is for -f only");
}

}  // namespace

OptionParser clockCtlOptionParser(ClockCtlOptions& options) {
  OptionParser parser({"clockctl", "Controls a running clockhost.", "VERB [ARGUMENTS]", kStatuses});
  parser.addPath("--socket", "Socket for the verbs call, watch, wait and wait-host",
                 options.socket);
  parser.addPath("--control-socket", "Socket for all other verbs", options.controlSocket)
      .shownDefault = "--socket with \".control\" appended";
  parser.addFlag("--json", "Print answers and errors as JSON, one object on each line",
                 options.json);
  parser.add({"--timeout", "SECONDS", "How long to wait for a reply; also a duration, as 15m",
              [&](const std::string& text) { return takeTimeout(text, options); },
              "2 for call, watch and wait, 60 for clock advance and to, else 5"});
  parser.add({"--wait-host", "DURATION", "First wait for a host that is starting, up to that long",
              [&](const std::string& text) { return takeWaitHost(text, options); }});
  parser
      .addPath("--file",
               "Carry out the commands of the file, one on each line; - reads standard input",
               options.file)
      .letter = "-f";
  parser.addFlag("--keep-going", "Go on after a command of the file that failed",
                 options.keepGoing);
  parser.addFlag("--raw", "Send any names and values, as given, to test what a host does with them",
                 options.raw);
  return parser;
}

std::optional<ClockCtlOptions> readClockCtlOptions(std::span<const std::string> words,
                                                   const std::filesystem::path& defaultSocket,
                                                   std::ostream& out) {
  ClockCtlOptions options;
  options.socket = defaultSocket;
  OptionParser parser = clockCtlOptionParser(options);
  const OptionParser::Request request = parser.read(words);
  options.verb = parser.arguments();
  const std::span<const std::string> verb = options.verb;
  if (request == OptionParser::Request::version) {
    out << kVersion << '\n';
  } else if (request == OptionParser::Request::help) {
    out << helpFor(verb, defaultSocket);
  } else if (!printHelp(verb, options.json, defaultSocket, out)) {
    requireOneSource(parser, options);
    if (options.controlSocket.empty()) options.controlSocket = controlSocketBeside(options.socket);
    return options;
  }
  return std::nullopt;
}

bool printHelp(std::span<const std::string> words, bool json,
               const std::filesystem::path& defaultSocket, std::ostream& out) {
  if (words.empty() || words.front() != "help") return false;
  if (words.size() > 2) {
    throw UsageError(quotedText(words[2]) + " is one word too many (usage: help [VERB])");
  }
  const auto about = words.subspan(1);
  out << (json ? helpAsJson(about) : helpFor(about, defaultSocket));
  return true;
}

}  // namespace host
