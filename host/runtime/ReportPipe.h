#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "base/Descriptor.h"

namespace host {

// The named pipe of the NTP reports, for its owner only, in a folder that nobody but root could
// exchange. It is this host's alone: its folder is locked for as long as the object lives. As long,
// the device's opens of its path reach this pipe and no other. The file stays when the object goes:
// a client may still hold it.
// Owner: the device. Thread: one at a time. Failure: the constructor throws Error: it cannot be
// created, another host has it, or folder or pipe are somebody else's.
class ReportPipe {
 public:
  static constexpr const char* kDeviceFolder = "/tmp/votk/ipc";

  ReportPipe();
  ~ReportPipe();
  ReportPipe(const ReportPipe&) = delete;
  ReportPipe& operator=(const ReportPipe&) = delete;

  // On this machine.
  [[nodiscard]] const std::string& path() const { return m_path; }

  // A way to this very pipe, also after its file was deleted or replaced; as long as the object.
  // After restore() it is the way to the new one.
  [[nodiscard]] std::string heldPath() const;

  // A descriptor that becomes readable when the pipe, or a folder on the way to it, is deleted,
  // moved or replaced. It stays the object's. Throws Error when the system has no watch left.
  [[nodiscard]] int watch();

  // To be called when it is readable: makes a pipe that is not at its path any more again, says so
  // in the log, and wakes a listener that waits for the former one. A failure is logged, and the
  // next change tries again.
  void restore();

 private:
  [[nodiscard]] Descriptor take();
  [[nodiscard]] Descriptor takeWatched();
  [[nodiscard]] Descriptor openParent();
  [[nodiscard]] Descriptor takeFolder(const Descriptor& parent) const;
  [[nodiscard]] Descriptor takePipe() const;
  void lock(Descriptor folder);
  void renew();
  void watchFolder(int folder, std::uint32_t changes);
  void forgetWatches(const std::set<int>& before) const;
  void passEvents() const;

  std::string m_folderPath;
  std::string m_path;
  Descriptor m_folder;      // holds the lock
  Descriptor m_held;        // neither a reader nor a writer
  Descriptor m_former;      // of a pipe that was replaced: wakes a listener that comes late
  Descriptor m_watch;       // none before watch()
  std::set<int> m_watches;  // of the folders
};

}  // namespace host
