#include "scenario/ScenarioSuite.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <ostream>

#include "base/Error.h"
#include "base/PrintableText.h"
#include "runtime/Plugin.h"
#include "scenario/ScenarioFile.h"
#include "scenario/ScenarioProcesses.h"
#include "scenario/ScenarioReport.h"

namespace host {
namespace fs = std::filesystem;
namespace {

// Reads all files, and prints a line for each wrong one. False: there is a wrong one.
bool readCases(const SuiteOptions& options, std::vector<ScenarioCase>& cases, std::ostream& err) {
  bool right = true;
  for (const fs::path& file : scenarioFiles(options.files)) {
    try {
      cases.push_back({file.string(), readScenarioFile(file)});
    } catch (const ScenarioTextError& error) {
      err << error.what() << '\n';
      right = false;
    }
  }
  return right;
}

// A report that is opened before the first case runs, so that a wrong path is refused at once.
class JunitFile {
 public:
  explicit JunitFile(fs::path path) : m_path(std::move(path)) {
    if (m_path.empty()) return;
    m_stream.open(m_path);
    if (!m_stream) fail();
  }

  void write(const std::string& text) {
    if (m_path.empty()) return;
    m_stream << text;
    if (!m_stream.flush()) fail();
  }

 private:
  [[noreturn]] void fail() const {
    throw Error("the report " + quotedText(m_path.string()) +
                " cannot be written; name a file in a folder that you may write to");
  }

  const fs::path m_path;
  std::ofstream m_stream;
};

bool allPassed(const std::vector<ScenarioCase>& cases) {
  return std::all_of(cases.begin(), cases.end(), [](const ScenarioCase& each) {
    return each.end == ScenarioCase::End::passed;
  });
}

}  // namespace

SuiteStatus runScenarioSuite(const fs::path& plugin, const SuiteOptions& options, std::ostream& out,
                             std::ostream& err, bool onTerminal) try {
  std::vector<ScenarioCase> cases;
  if (!readCases(options, cases, err)) return suiteWrong;
  Plugin loaded(plugin);
  JunitFile junit(options.junit);
  ScenarioReport report(cases, options.tap, onTerminal && cases.size() > 1, out, err);
  const auto finish = [&] {
    report.finish();
    junit.write(junitText(cases));
  };
  int signal = 0;
  try {
    signal = runCases(loaded, cases, options, [&] { report.update(); });
  } catch (const Error&) {
    finish();
    throw;
  }
  finish();
  if (signal != 0) std::raise(signal);  // with the default action
  return allPassed(cases) ? suitePassed : suiteFailed;
} catch (const ScenarioTextError& error) {
  err << error.what() << '\n';
  return suiteWrong;
}

}  // namespace host
