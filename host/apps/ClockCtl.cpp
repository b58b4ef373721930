#include "apps/ClockCtl.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "apps/ClockCtlOptions.h"
#include "apps/Command.h"
#include "apps/CommandFile.h"
#include "apps/Session.h"
#include "base/PrintableText.h"
#include "verbs/JsonText.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

enum Status : int { done = 0, refused = 1, usage = 2, noHost = 3 };

// Whether errors are JSON too, also that of a command line that cannot be read.
bool asksForJson(std::span<const std::string> words) {
  const auto end = std::find(words.begin(), words.end(), "--");
  return std::find(words.begin(), end, "--json") != end;
}

// Prints an error as one line.
class Failure {
 public:
  Failure(std::span<const std::string> words, std::ostream& err)
      : m_json(asksForJson(words)), m_err(err) {}

  // place: "FILE:LINE: ", in place of the program's name; empty: none.
  int operator()(const std::string& text, Status status, const std::string& place = "") const {
    const std::string line = escapedLine(place + text);
    if (m_json) {
      m_err << jsonLine({{"ok", false}, {"status", status}, {"error", line}}) << '\n';
    } else {
      m_err << (place.empty() ? errorLine("clockctl", text) : line + '\n');
    }
    m_err.flush();
    return status;
  }

 private:
  const bool m_json;
  std::ostream& m_err;
};

// Carries out commands, and reports what fails.
class Runner {
 public:
  Runner(std::span<const std::string> words, std::ostream& out, std::ostream& err)
      : m_fail(words, err), m_out(out), m_err(err) {}

  int run(std::span<const std::string> words, const std::filesystem::path& defaultSocket) {
    return statusOf([&] {
      const auto options = readClockCtlOptions(words, defaultSocket, m_out);
      if (!options) return int{done};
      Session session(*options);
      if (!options->file.empty()) return runFile(*options, session, defaultSocket);
      carryOut(*options, options->verb, session, m_out, m_err);
      return int{done};
    });
  }

 private:
  // The status of the first command that failed.
  int runFile(const ClockCtlOptions& options, Session& session,
              const std::filesystem::path& defaultSocket) {
    CommandFile commands(options.file);
    int first = done;
    for (bool more = true; more && m_out && (first == done || options.keepGoing);) {
      const int status = statusOf(
          [&] {
            more = commands.next();
            if (more && !printHelp(commands.words(), options.json, defaultSocket, m_out)) {
              carryOut(options, commands.words(), session, m_out, m_err);
            }
            return int{done};
          },
          &commands);
      m_out.flush();
      if (status != done) session.disconnect();
      if (first == done) first = status;
    }
    return first;
  }

  // file: the body's errors are about its current line.
  template <typename Body>
  int statusOf(Body body, const CommandFile* file = nullptr) try {
    return body();
  } catch (const UsageError& error) {
    return fail(file, error.what(), usage);
  } catch (const NoHost& error) {
    return fail(file, error.what(), noHost);
  } catch (const Json::exception&) {
    return fail(file, "the host's answer is not understood; use the clockctl of the host's version",
                refused);
  } catch (const std::exception& error) {
    return fail(file, error.what(), refused);
  }

  int fail(const CommandFile* file, const std::string& text, Status status) const {
    return m_fail(text, status, file == nullptr ? "" : file->place());
  }

  const Failure m_fail;
  std::ostream& m_out;
  std::ostream& m_err;
};

}  // namespace

int runClockCtl(std::span<const std::string> words, const std::filesystem::path& defaultSocket,
                std::ostream& out, std::ostream& err) {
  return Runner(words, out, err).run(words, defaultSocket);
}

int failClockCtl(std::span<const std::string> words, const std::string& error, std::ostream& err) {
  return Failure(words, err)(error, refused);
}

}  // namespace host
