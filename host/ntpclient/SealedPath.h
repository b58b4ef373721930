#pragma once

#include <cstddef>
#include <filesystem>

namespace host::ntp {

// A path in read-only memory. The system call filter allows opening the file whose name is at this
// address, and nothing that the program does later changes the name.
// Owner: the program, until its end. Immutable. Failure: host::Error from the constructor.
class SealedPath {
 public:
  explicit SealedPath(const std::filesystem::path& path);
  ~SealedPath();
  SealedPath(const SealedPath&) = delete;
  SealedPath& operator=(const SealedPath&) = delete;

  [[nodiscard]] const char* get() const { return static_cast<const char*>(m_memory); }

 private:
  const std::size_t m_size;
  void* const m_memory;
};

}  // namespace host::ntp
