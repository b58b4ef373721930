#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace host {

// Owns one file descriptor, or none (-1). Owner: its holder. Thread: one at a time.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
  ~Descriptor() { reset(); }
  Descriptor(Descriptor&& other) noexcept : m_descriptor(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    reset(other.release());
    return *this;
  }

  [[nodiscard]] int get() const { return m_descriptor; }
  [[nodiscard]] bool valid() const { return m_descriptor >= 0; }
  [[nodiscard]] int release() { return std::exchange(m_descriptor, -1); }
  void reset(int descriptor = -1) {
    const int old = std::exchange(m_descriptor, descriptor);
    if (old >= 0) ::close(old);
  }

 private:
  int m_descriptor = -1;
};

// Whether the descriptor is of a pipe, named or not.
[[nodiscard]] inline bool isFifo(int descriptor) {
  struct stat found {};
  return ::fstat(descriptor, &found) == 0 && S_ISFIFO(found.st_mode);
}

}  // namespace host
