#include "runtime/PluginFile.h"

#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "base/Descriptor.h"

namespace host {
namespace {

constexpr unsigned char kWordSize = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

template <class Record>
bool readAt(int file, std::uint64_t offset, Record* records, std::size_t count) {
  const std::size_t size = count * sizeof(Record);
  return pread(file, records, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

// Saturates: a sum that overflows is beyond the end of any file.
std::uint64_t endOf(std::uint64_t offset, std::uint64_t size) {
  return offset + size < offset ? UINT64_MAX : offset + size;
}

std::string truncated(std::uint64_t size, std::uint64_t wanted) {
  return "it is cut off, with " + std::to_string(size) + " of " + std::to_string(wanted) + " bytes";
}

// Where the last segment that dlopen maps ends; with unreadable program headers, where they end.
std::uint64_t endOfSegments(int file, const ElfW(Ehdr) & header) {
  std::vector<ElfW(Phdr)> segments(header.e_phnum);
  std::uint64_t end = endOf(header.e_phoff, segments.size() * sizeof(ElfW(Phdr)));
  if (!readAt(file, header.e_phoff, segments.data(), segments.size())) return end;
  for (const ElfW(Phdr) & segment : segments) {
    end = std::max(end, endOf(segment.p_offset, segment.p_filesz));
  }
  return end;
}

std::optional<std::string> elfFault(int file, std::uint64_t size) {
  ElfW(Ehdr) header{};
  if (!readAt(file, 0, &header, 1) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
    return "it is not a shared object";
  }
  if (header.e_ident[EI_CLASS] != kWordSize || header.e_phentsize != sizeof(ElfW(Phdr))) {
    return "it is built for another kind of processor";
  }
  const std::uint64_t sections =
      endOf(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize);
  const std::uint64_t wanted = std::max(sections, endOfSegments(file, header));
  if (size < wanted) return truncated(size, wanted);
  return std::nullopt;
}

}  // namespace

std::optional<std::string> pluginFileFault(const std::filesystem::path& file) {
  const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  struct stat properties {};
  if (!descriptor.valid() || fstat(descriptor.get(), &properties) != 0) {
    return std::string("it cannot be opened: ") + std::strerror(errno);
  }
  if (!S_ISREG(properties.st_mode)) return "it is not a regular file";
  return elfFault(descriptor.get(), static_cast<std::uint64_t>(properties.st_size));
}

}  // namespace host
