#pragma once

#include <fcntl.h>
#include <unistd.h>

// An open descriptor, or -1; closed when the object goes, never inherited by a child, and never the
// controlling terminal: what is in a path's place may be a terminal.
class Descriptor {
 public:
  ~Descriptor() { close(); }
  Descriptor() = default;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  // REQUIRES: none open.
  [[nodiscard]] bool open(const char* path, int flags) {
    m_number = ::open(path, flags | O_CLOEXEC | O_NOCTTY);
    return m_number >= 0;
  }
  void close() {
    if (m_number >= 0) ::close(m_number);
    m_number = -1;
  }
  [[nodiscard]] int number() const { return m_number; }

 private:
  int m_number = -1;
};
