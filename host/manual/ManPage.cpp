#include "manual/ManPage.h"

#include <cctype>

#include "apps/ClockCtlOptions.h"
#include "apps/HostOptions.h"
#include "base/DefaultPaths.h"
#include "base/Version.h"
#include "verbs/Verb.h"

namespace host {
namespace {

std::string section(std::string_view name) {
  return ".SH " + std::string(name) + '\n';
}

// A paragraph with a bold term.
std::string item(std::string_view what, std::string_view meaning) {
  return ".TP\n\\fB" + roff(what) + "\\fR\n" + roff(meaning) + '\n';
}

std::string head(const OptionParser::Program& program, const std::string& date) {
  std::string title(program.name);
  for (char& letter : title) letter = static_cast<char>(std::toupper(letter));
  std::string arguments(program.arguments);
  if (!arguments.empty()) arguments = ' ' + arguments;
  return ".TH " + title + " 1 " + date + " \"" + std::string(program.name) + ' ' + kVersion +
         "\" \"User Commands\"\n" + section("NAME") + std::string(program.name) + " \\- " +
         roff(program.description.substr(0, program.description.size() - 1)) + '\n' +
         section("SYNOPSIS") + ".B " + std::string(program.name) + "\n[OPTIONS]" + roff(arguments) +
         '\n';
}

std::string optionItems(const OptionParser& parser) {
  std::string text =
      section("OPTIONS") +
      "If an option is given twice, the last one counts, unless it may be repeated.\n";
  for (const Option& option : parser.options()) {
    const std::string shown =
        option.shownDefault.empty() ? "" : " (default: " + option.shownDefault + ')';
    text += item(usageOf(option), std::string(option.help) + shown + '.');
  }
  return text;
}

std::string statusItems(const OptionParser& parser) {
  std::string text = section("EXIT STATUS");
  for (const auto& [status, meaning] : parser.program().statuses) {
    text += item(std::to_string(status), std::string(meaning) + '.');
  }
  return text;
}

std::string verbItems() {
  std::string text = section("VERBS");
  for (const Verb& verb : allVerbs()) {
    text += item(verbUsage(verb), std::string(verb.help) + '.');
    for (const VerbAction& action : verb.actions) {
      text += item(actionUsage(verb, action), std::string(action.help) + '.');
    }
  }
  text += section("WORDS");
  for (const auto& [word, meaning] : wordForms()) text += item(word, meaning + '.');
  return text;
}

}  // namespace

std::string roff(std::string_view text) {
  std::string out;
  bool bold = false;
  for (const char letter : text) {
    if (letter == '`') {
      bold = !bold;
      out += bold ? "\\fB" : "\\fR";
    } else if (letter == '\\') {
      out += "\\e";
    } else if (letter == '-') {
      out += "\\-";
    } else {
      const bool control = out.empty() && (letter == '.' || letter == '\'');
      out.append(control ? "\\&" : "") += letter;
    }
  }
  return out;
}

std::string programPage(const OptionParser& parser, const std::string& date,
                        const std::string& text, const std::string& verbs,
                        const std::string& more) {
  return head(parser.program(), date) + section("DESCRIPTION") + text + optionItems(parser) +
         verbs + statusItems(parser) + more;
}

std::string clockHostPage(const std::string& date) {
  HostOptions options;
  options.plugin = std::string("../") + kInstalledPlugin + " from the program's folder";
  options.device.state = "$XDG_STATE_HOME/clockhost, else ~/.local/state/clockhost";
  options.socket = kSocketDefault;
  return programPage(
      hostOptionParser(options), date,
      "The host runs in the foreground, logs to standard error, and stops on SIGINT and SIGTERM.\n"
      "It starts with the saved settings, at the time that was saved last, which may be up to 12\n"
      "hours older than the end of the last run.\n",
      "",
      section("ENVIRONMENT") +
          item("NTPCLIENT_PORT",
               "The port of the time server, for the stand-in NTP client (123).") +
          item("XDG_STATE_HOME, XDG_RUNTIME_DIR", "The folders of state and sockets.") +
          item("NOTIFY_SOCKET",
               "The socket of a service manager, which is notified when the host answers and when "
               "it begins to end.") +
          item("JOURNAL_STREAM",
               "If it names standard error, each line begins with its priority, for the journal.") +
          section("SEE ALSO") +
          ".BR clockctl (1),\n.BR clockpanel (1),\n.BR clock\\-scenario (5),\n"
          ".BR clock\\-protocol (7)\n");
}

std::string clockCtlPage(const std::string& date) {
  ClockCtlOptions options;
  options.socket = kSocketDefault;
  return programPage(
      clockCtlOptionParser(options), date,
      "Options may come before and after the verb, up to a word\n.BR \\-\\- .\n"
      "An error is one line on standard error: what was wrong, and what would be right.\n",
      verbItems(),
      section("SEE ALSO") +
          ".BR clockhost (1),\n.BR clock\\-scenario (5),\n.BR clock\\-protocol (7)\n");
}

}  // namespace host
