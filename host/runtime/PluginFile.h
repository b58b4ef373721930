#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace host {

// Why the file cannot be a plug-in, as "it is ...": it is a folder, a FIFO or a device, it is no
// ELF file of this machine's word size, or shorter than its own headers say. Empty: it may be one.
// The loader would wait for a FIFO, and maps a file without a look at its length: reading what is
// missing ends the process (SIGBUS). Thread: any.
[[nodiscard]] std::optional<std::string> whyNoPlugin(const std::filesystem::path& file);

}  // namespace host
