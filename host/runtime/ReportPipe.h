#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "base/Descriptor.h"

namespace host {

// Creates the named pipe through which the NTP client reports the time, mode 0600, in a folder that
// no other user but root can replace. While the object exists, it locks that folder against other
// hosts, and opens of the pipe's path by the plug-in reach this pipe even if another file is there.
// The pipe stays on the disk afterwards, because a client may still use it.
// Owner: the device. Thread: one at a time. Failure: the constructor throws Error: the pipe cannot
// be created, another host uses it, or folder or pipe belong to another user.
class ReportPipe {
 public:
  static constexpr const char* kDeviceFolder = "/tmp/votk/ipc";

  ReportPipe();
  ~ReportPipe();
  ReportPipe(const ReportPipe&) = delete;
  ReportPipe& operator=(const ReportPipe&) = delete;

  // The pipe's path on this machine.
  [[nodiscard]] const std::string& path() const { return m_path; }

  // A path in /proc that reaches this pipe even after its file was deleted or replaced. Valid while
  // the object lives; after restore() it reaches the new pipe.
  [[nodiscard]] std::string heldPath() const;

  // Returns a descriptor that becomes readable when the pipe, or a folder of its path, is deleted,
  // moved or replaced. The object keeps it. Throws Error when the system has no watch left.
  [[nodiscard]] int watch();

  // Call it when that descriptor is readable. If the pipe is gone from its path, creates a new one,
  // with one log line, and wakes a listener that waits for the old one. A failure is logged; the
  // next change retries.
  void restore();

 private:
  [[nodiscard]] Descriptor acquire();
  [[nodiscard]] Descriptor openAll();
  [[nodiscard]] Descriptor openParent();
  [[nodiscard]] Descriptor openFolder(const Descriptor& parent) const;
  [[nodiscard]] Descriptor openPipe() const;
  void lock(Descriptor folder);
  void replace();
  void watchFolder(int folder, std::uint32_t changes);
  void removeUnusedWatches(const std::set<int>& before) const;
  void discardEvents() const;

  std::string m_folderPath;
  std::string m_path;
  Descriptor m_lockedFolder;
  Descriptor m_pipe;        // O_PATH: neither a reader nor a writer
  Descriptor m_replaced;    // the replaced pipe, kept open so that no late listener blocks in it
  Descriptor m_inotify;     // inotify; invalid before watch()
  std::set<int> m_watches;  // of the folders
};

}  // namespace host
