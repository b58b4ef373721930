#include "telephone/Recording.h"

#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>

#include "base/DefaultPaths.h"
#include "base/Error.h"
#include "base/ReplaceAll.h"
#include "base/WriteAll.h"

namespace panel {
namespace {

constexpr const char* kMostSteps = "10000";  // of a recording that nobody ends
const std::string kReady = "ready\n";
constexpr auto kAnswer = std::chrono::seconds(10);
constexpr auto kLongestReplay = std::chrono::seconds(60);
constexpr int kKilled = 128 + SIGKILL;  // after that, or at the panel's end

ChildProgram::Deadline after(std::chrono::seconds limit) {
  return std::chrono::steady_clock::now() + limit;
}

// "clockctl: TEXT\n" without the program's name.
std::string reasonIn(std::string output) {
  while (!output.empty() && output.back() == '\n') output.pop_back();
  constexpr std::string_view kName = "clockctl: ";
  return output.rfind(kName, 0) == 0 ? output.substr(kName.size()) : output;
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

// A file in memory, which children of this process open by its path.
host::Descriptor memoryFile(const std::string& text) {
  host::Descriptor file(::memfd_create("scenario", MFD_CLOEXEC));
  if (file.valid() && host::writeAll(file.get(), text)) return file;
  throw host::Error("no memory for a scenario, or too many files are open");
}

std::string pathOf(const host::Descriptor& file) {
  return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(file.get());
}

}  // namespace

Recording::Recording(const HostSockets& sockets, const std::stop_token& ending)
    : m_file(memoryFile("")),
      m_recorder(host::programFolder() / "clockctl",
                 {"--socket", sockets.call.string(), "--control-socket", sockets.control.string(),
                  "record", pathOf(m_file), "--overwrite", "--count", kMostSteps}) {
  const bool inTime = m_recorder.readTo(kReady, after(kAnswer), ending);
  if (inTime && m_recorder.output() == kReady) return;
  throw host::Error(inTime ? reasonIn(m_recorder.output()) : "no reply; the host is busy");
}

host::Json Recording::finish(const std::stop_token& ending) {
  m_recorder.interrupt();
  const int status = m_recorder.finish(after(kLongestReplay), ending);
  const std::string said = status == kKilled
                               ? "whether it replays is unknown: that takes longer than a minute"
                               : reasonIn(m_recorder.output().substr(kReady.size()));
  std::ifstream file(pathOf(m_file), std::ios::binary);
  return {{"scenario", std::string(std::istreambuf_iterator<char>(file), {})},
          {"said", host::replaceAll(said, pathOf(m_file), "the recording")}};
}

host::Json replay(const std::string& scenario, const std::stop_token& ending) {
  refuseIncludes(scenario);
  const host::Descriptor file = memoryFile(scenario);
  ChildProgram runner(host::programFolder() / "clockhost", {"--scenario", pathOf(file)});
  const int status = runner.finish(after(kLongestReplay), ending);
  if (status == 0) return {{"ok", true}, {"passed", true}};
  if (status == kKilled) throw host::Error("the scenario took longer than a minute");
  if (status > 2) throw host::Error("clockhost ended with status " + std::to_string(status));
  return {{"ok", true},
          {"passed", false},
          {"output", host::replaceAll(runner.output(), pathOf(file), "scenario")}};
}

}  // namespace panel
