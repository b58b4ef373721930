#pragma once

#include <ios>
#include <memory>
#include <string>

// A named file in the device's persistent area; the platform decides in which folder.
// Owner: its creator. Thread: one at a time.
// The file changes in one step, at shutdown: a reader sees the old content or the new one. Before
// init and after shutdown, every call but init is refused.
class Storage {
 public:
  Storage();
  ~Storage();  // without shutdown, the new content is dropped
  Storage(const Storage&) = delete;
  Storage& operator=(const Storage&) = delete;

  // Binds the object to the file `name`, a name without a folder. False when it cannot be written,
  // or is no such name.
  bool init(const char* name, std::ios_base::openmode readMode, std::ios_base::openmode writeMode);

  // Drops the old content.
  bool clear();

  // Appends `length` bytes. subName: a part of the storage, null for the file as a whole.
  bool store(const char* subName, char* data, int length);

  // Replaces the file's content by the new one, and unbinds. False when the old content remains.
  bool shutdown();

  // Deletes the file of any kind, or the empty folder, at `path`. False when it still exists; true
  // when there was none. Never throws.
  static bool deleteFile_noEx(const std::string& path);

 private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};
