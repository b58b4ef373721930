#pragma once

#include <fcntl.h>
#include <unistd.h>

// A file opened by its path, or none. Closed with the object, not inherited by a child, and never
// the controlling terminal: the path may lead to a terminal.
class OpenFile {
 public:
  ~OpenFile() { close(); }
  OpenFile() = default;
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  // REQUIRES: nothing is open.
  [[nodiscard]] bool open(const char* path, int flags) {
    m_number = ::open(path, flags | O_CLOEXEC | O_NOCTTY);
    return m_number >= 0;
  }
  void close() {
    if (m_number >= 0) ::close(m_number);
    m_number = -1;
  }
  [[nodiscard]] int number() const { return m_number; }  // -1: nothing is open

 private:
  int m_number = -1;
};
