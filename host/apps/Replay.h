#pragma once

#include <filesystem>
#include <string>

namespace host {

class RecordedFile;

// What replays a scenario.
struct Replayer {
  std::filesystem::path clockhost;
  std::filesystem::path plugin;  // empty: clockhost's default
};

// The clockhost beside this program, with that plug-in.
[[nodiscard]] Replayer replayerWith(std::filesystem::path plugin);

// Runs the recorded scenario, and comments out the rest from the line on in which the replay
// differed, so that the file passes. Returns what is wrong with the recording, in the second case
// with the advice; empty: nothing, or the file is a device. Thread: its caller's. Failure: Error,
// when the file cannot be read or written.
[[nodiscard]] std::string keepWhatReplays(RecordedFile& file, const Replayer& replayer,
                                          const std::string& advice);

}  // namespace host
