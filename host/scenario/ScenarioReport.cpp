#include "scenario/ScenarioReport.h"

#include <algorithm>
#include <ostream>
#include <sstream>

#include "base/PrintableText.h"
#include "base/ReplaceAll.h"
#include "framework/XmlText.h"

namespace host {
namespace {

using std::chrono::milliseconds;
using End = ScenarioCase::End;

std::size_t countOf(std::span<const ScenarioCase> cases, End end) {
  return static_cast<std::size_t>(std::count_if(
      cases.begin(), cases.end(), [end](const ScenarioCase& each) { return each.end == end; }));
}

std::string firstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

// "1.234", in seconds
std::string secondsOf(milliseconds time) {
  std::string digits = std::to_string(time.count() % 1000);
  digits.insert(0, 3 - digits.size(), '0');
  return std::to_string(time.count() / 1000) + '.' + digits;
}

// The text as an attribute or an element's content.
std::string xmlOf(const std::string& text) {
  if (!isXmlText(text)) return "(not printable)";
  return replaceAll(escapedXmlText(text), "\"", "&quot;");
}

std::string junitCase(const ScenarioCase& each) {
  const std::string begin = "  <testcase classname=\"scenario\" name=\"" +
                            xmlOf(escapedLine(each.file)) + "\" time=\"" + secondsOf(each.took) +
                            '"';
  if (each.end == End::passed) return begin + "/>\n";
  if (each.end == End::notRun) return begin + "><skipped/></testcase>\n";
  return begin + ">\n    <failure message=\"" + xmlOf(firstLine(each.failure)) + "\">" +
         xmlOf(each.failure) + "</failure>\n  </testcase>\n";
}

// In TAP, an unescaped # begins a directive.
std::string tapName(const std::string& file) {
  return replaceAll(escapedLine(file), "#", "\\#");
}

}  // namespace

ScenarioReport::ScenarioReport(std::span<const ScenarioCase> cases, bool tap, bool progress,
                               std::ostream& out, std::ostream& err)
    : m_cases(cases),
      m_tap(tap),
      m_out(out),
      m_err(err),
      m_progress(cases.size(), "scenarios", progress ? &err : nullptr) {
  if (m_tap) m_out << "TAP version 13\n1.." << cases.size() << std::endl;
  showProgress();
}

void ScenarioReport::update() {
  m_progress.hide();
  for (; m_printed < m_cases.size() && m_cases[m_printed].end != End::notRun; ++m_printed) {
    print(m_cases[m_printed], m_printed + 1);
  }
  showProgress();
}

void ScenarioReport::finish() {
  m_progress.hide();
  for (; m_printed < m_cases.size(); ++m_printed) print(m_cases[m_printed], m_printed + 1);
  if (m_tap || m_cases.size() > 1) m_out << (m_tap ? "# " : "") << summaryOf(m_cases) << std::endl;
}

void ScenarioReport::print(const ScenarioCase& each, std::size_t number) {
  if (!m_tap) {
    m_err << each.failure << std::flush;
    return;
  }
  m_out << (each.end == End::failed ? "not ok " : "ok ") << number << " - " << tapName(each.file)
        << (each.end == End::notRun ? " # SKIP not run" : "") << '\n';
  std::istringstream lines(each.failure);
  for (std::string line; std::getline(lines, line);) m_out << "# " << line << '\n';
  m_out << std::flush;
}

void ScenarioReport::showProgress() {
  const std::size_t failed = countOf(m_cases, End::failed);
  m_progress.show(m_cases.size() - countOf(m_cases, End::notRun),
                  failed > 0 ? ", " + std::to_string(failed) + " failed" : "");
}

std::string summaryOf(std::span<const ScenarioCase> cases) {
  std::string text = std::to_string(cases.size()) +
                     (cases.size() == 1 ? " scenario: " : " scenarios: ") +
                     std::to_string(countOf(cases, End::passed)) + " passed";
  const std::size_t failed = countOf(cases, End::failed);
  const std::size_t notRun = countOf(cases, End::notRun);
  if (failed > 0) text += ", " + std::to_string(failed) + " failed";
  if (notRun > 0) text += ", " + std::to_string(notRun) + " not run";
  return text;
}

std::string junitText(std::span<const ScenarioCase> cases) {
  milliseconds total{};
  for (const ScenarioCase& each : cases) total += each.took;
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"scenarios\" tests=\"" +
      std::to_string(cases.size()) + "\" failures=\"" +
      std::to_string(countOf(cases, End::failed)) + "\" errors=\"0\" skipped=\"" +
      std::to_string(countOf(cases, End::notRun)) + "\" time=\"" + secondsOf(total) + "\">\n";
  for (const ScenarioCase& each : cases) text += junitCase(each);
  return text + "</testsuite>\n";
}

}  // namespace host
