#include "apps/Replay.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "apps/RecordedFile.h"
#include "base/DefaultPaths.h"
#include "base/Descriptor.h"
#include "base/PrintableText.h"

namespace host {
namespace {

// Where a replay differs, and how. line: from 1; 0: not known.
struct Difference {
  std::size_t line = 0;
  std::string reason;
};

// The exit status and the output of a program. A start that fails gives its reason as output.
struct Result {
  int status = -1;
  std::string output;
};

std::string allOf(int pipe) {
  std::string text;
  std::array<char, 4096> part{};
  for (;;) {
    const ssize_t size = ::read(pipe, part.data(), part.size());
    if (size > 0) text.append(part.data(), static_cast<std::size_t>(size));
    if (size == 0 || (size < 0 && errno != EINTR)) return text;
  }
}

Result resultOf(std::vector<std::string> words) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {-1, std::strerror(errno)};
  const Descriptor output(ends[0]);
  Descriptor input(ends[1]);
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, input.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, input.get(), STDERR_FILENO);
  pid_t process = -1;
  const int error =
      ::posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  input.reset();
  if (error != 0) return {-1, words[0] + ": " + std::strerror(error)};
  Result result{-1, allOf(output.get())};
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
  if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
  return result;
}

// The first line is "FILE:LINE: REASON".
Difference differenceIn(const std::string& output, const std::string& file) {
  Difference difference{0, output.substr(0, output.find('\n'))};
  const std::string before = escapedLine(file) + ':';
  if (!difference.reason.starts_with(before)) return difference;
  const char* const begin = difference.reason.data() + before.size();
  const char* const end = difference.reason.data() + difference.reason.size();
  const char* const rest = std::from_chars(begin, end, difference.line).ptr;
  difference.reason = std::string(rest, end);
  difference.reason.erase(0, difference.reason.find_first_not_of(": "));
  return difference;
}

std::optional<Difference> differenceOf(const std::filesystem::path& file,
                                       const Replayer& replayer) {
  const std::string name = std::filesystem::absolute(file).string();
  std::vector<std::string> words = {replayer.clockhost.string(), "--scenario", name};
  if (!replayer.plugin.empty()) words.insert(words.end(), {"--plugin", replayer.plugin.string()});
  const Result result = resultOf(std::move(words));
  if (result.status == 0) return std::nullopt;
  return differenceIn(result.output.empty() ? "the replay was stopped" : result.output, name);
}

}  // namespace

Replayer replayerWith(std::filesystem::path plugin) {
  return {programFolder() / "clockhost", std::move(plugin)};
}

std::string keepWhatReplays(RecordedFile& file, const Replayer& replayer,
                            const std::string& advice) {
  if (!std::filesystem::is_regular_file(file.path())) return {};
  const std::string name = quotedText(file.path().string());
  std::string said;
  while (const auto difference = differenceOf(file.path(), replayer)) {
    if (difference->line == 0 || !file.commentFrom(difference->line)) {
      return name + " could not be replayed: " + escapedLine(difference->reason) +
             "; check it with `clockhost --scenario`";
    }
    said = "holds comments from line " + std::to_string(difference->line) +
           " on, where its replay differed: " + difference->reason;
  }
  return said.empty() ? said : name + ' ' + said + "; " + advice;
}

}  // namespace host
