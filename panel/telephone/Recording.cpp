#include "telephone/Recording.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>

#include "base/Error.h"
#include "base/WriteAll.h"

namespace panel {
namespace {

constexpr const char* kMostSteps = "10000";  // of a recording that nobody ends
constexpr auto kAnswer = std::chrono::seconds(10);
constexpr auto kLongestReplay = std::chrono::seconds(60);

ChildProgram::Deadline after(std::chrono::seconds limit) {
  return std::chrono::steady_clock::now() + limit;
}

// "clockctl: TEXT\n" without the program's name.
std::string reasonIn(std::string output) {
  while (!output.empty() && output.back() == '\n') output.pop_back();
  constexpr std::string_view kName = "clockctl: ";
  return output.rfind(kName, 0) == 0 ? output.substr(kName.size()) : output;
}

// The N of "FILE:N: ...", 0 if the output does not begin so.
int lineIn(const std::string& output, const std::string& file) {
  if (output.rfind(file + ":", 0) != 0) return 0;
  return std::atoi(output.c_str() + file.size() + 1);
}

// A page has no files that a scenario could include. Quotes, and a byte-order mark, do not hide it.
void refuseIncludes(const std::string& scenario) {
  std::istringstream lines(scenario);
  for (std::string line, word; std::getline(lines, line);) {
    std::erase_if(line, [](char c) {
      return std::string_view("\"\xEF\xBB\xBF").find(c) != std::string_view::npos;
    });
    if (std::istringstream(line) >> word && word == "include") {
      throw host::Error("a scenario from the page cannot include files; put their lines into it");
    }
  }
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace

MemoryFile::MemoryFile(const std::string& text) : m_file(::memfd_create("scenario", MFD_CLOEXEC)) {
  if (!m_file.valid() || !host::writeAll(m_file.get(), text)) {
    throw host::Error("no memory for a scenario, or too many files are open");
  }
}

std::string MemoryFile::path() const {
  return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(m_file.get());
}

std::string MemoryFile::read() const {
  std::ifstream file(path(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Recording::Recording(const HostSockets& sockets)
    : m_recorder(programFolder() / "clockctl",
                 {"--socket", sockets.call.string(), "--control-socket", sockets.control.string(),
                  "record", m_file.path(), "--overwrite", "--count", kMostSteps}) {
  const bool inTime = m_recorder.readTo("ready\n", after(kAnswer));
  if (inTime && m_recorder.output() == "ready\n") return;
  throw host::Error(inTime ? reasonIn(m_recorder.output()) : "no reply; the host is busy");
}

std::string Recording::finish() {
  m_recorder.interrupt();
  static_cast<void>(m_recorder.finish(after(kAnswer)));
  return m_file.read();
}

host::Json replay(const std::string& scenario) {
  refuseIncludes(scenario);
  const MemoryFile file(scenario);
  ChildProgram runner(programFolder() / "clockhost", {"--scenario", file.path()});
  const int status = runner.finish(after(kLongestReplay));
  if (status == 0) return {{"ok", true}, {"passed", true}};
  if (status > 2) throw host::Error("the scenario took longer than a minute, and was stopped");
  return {{"ok", true},
          {"passed", false},
          {"line", lineIn(runner.output(), file.path())},
          {"output", replaced(runner.output(), file.path(), "scenario")}};
}

}  // namespace panel
