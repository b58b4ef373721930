#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>

#include "remote/Descriptor.h"

namespace host {

// A listening Unix stream socket and its file, mode 0600; 0660 when a group is to use it, too.
// Owner: the server. Thread: one. The destructor removes the file, if it is still this one.
// Failure: host::Error from the constructor, naming the file; a live host's socket is left alone.
class SocketFile {
 public:
  // A host holds the lock for far less. A process that holds it longer is no host that starts.
  static constexpr std::chrono::milliseconds kPatience{500};

  // Creates missing folders (the last one 0700, or 0710 for the group) and replaces a socket that
  // nobody listens at. Two hosts that start at once do not both get it: the folder is locked
  // (flock) meanwhile, and the constructor waits for the lock, at most for `patience`.
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
