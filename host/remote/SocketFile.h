#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>

#include "base/Descriptor.h"

namespace host {

// A listening Unix stream socket and its file, mode 0600, or 0660 with a group. Logs one line when
// that group cannot reach the file.
// Owner: the server. Thread: one. The destructor removes the file, unless it has been replaced.
// Failure: host::Error from the constructor, naming the file. Never replaces the socket of a
// running host.
class SocketFile {
 public:
  // A starting host holds the lock for a much shorter time.
  static constexpr std::chrono::milliseconds kPatience{500};

  // Creates missing folders (the last one 0700, or 0710 for the group) and replaces a stale socket.
  // The folder is locked (flock) meanwhile, so that only one of two hosts that start at once gets
  // the socket; the constructor waits for the lock for at most `patience`.
  explicit SocketFile(std::filesystem::path file, std::optional<gid_t> group = {},
                      std::chrono::milliseconds patience = kPatience);
  ~SocketFile();
  SocketFile(const SocketFile&) = delete;
  SocketFile& operator=(const SocketFile&) = delete;

  [[nodiscard]] int descriptor() const { return m_listener.get(); }

 private:
  void refuseIfTaken() const;
  void bind();
  void giveTo(gid_t group) const;
  void listen();

  std::filesystem::path m_file;
  Descriptor m_listener;
  dev_t m_device = 0;
  ino_t m_inode = 0;
};

}  // namespace host
