#pragma once

#include <filesystem>
#include <string>

namespace host {

class RecordedFile;

// The clockhost beside this program.
[[nodiscard]] std::filesystem::path replayingHost();

// Runs the recorded scenario with that clockhost, and comments out the rest from the line on in
// which the replay differed, so that the file passes. Returns what is wrong with the recording;
// empty: nothing, or the file is a device. Thread: its caller's. Failure: Error, when the file
// cannot be read or written.
[[nodiscard]] std::string keepWhatReplays(RecordedFile& file,
                                          const std::filesystem::path& clockhost);

}  // namespace host
