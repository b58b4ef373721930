#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace host {

// Checks a file before dlopen loads it: a regular file, an ELF file of this machine's word size,
// and as long as its own headers say. Without the check, dlopen would wait for a writer of a FIFO,
// and a truncated file would end the process (SIGBUS). Returns what is wrong, as "it is ..."; empty
// when the file passes. Thread: any.
[[nodiscard]] std::optional<std::string> pluginFileFault(const std::filesystem::path& file);

}  // namespace host
