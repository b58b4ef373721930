#include "ntpclient/SealedPath.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "base/Error.h"

namespace host::ntp {
namespace {

void* newMemory(std::size_t size) {
  void* const memory =
      ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw Error("no memory for the path of the pipe");
  return memory;
}

}  // namespace

SealedPath::SealedPath(const std::filesystem::path& path)
    : m_size(path.native().size() + 1), m_memory(newMemory(m_size)) {
  std::memcpy(m_memory, path.c_str(), m_size);
  if (::mprotect(m_memory, m_size, PROT_READ) == 0) return;
  const std::string why = std::strerror(errno);
  ::munmap(m_memory, m_size);
  throw Error("the path of the pipe cannot be sealed: " + why);
}

SealedPath::~SealedPath() {
  ::munmap(m_memory, m_size);
}

}  // namespace host::ntp
