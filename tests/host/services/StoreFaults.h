#pragma once

#include <cstddef>

namespace host {

// Counts SQLite's system calls and makes them fail. Thread: the test's.

// The number of syncs since the last call.
[[nodiscard]] std::size_t takeSyncs();

// The number of those syncs that were of folders.
[[nodiscard]] std::size_t takeFolderSyncs();

// During its lifetime, each of SQLite's writes fails, as on a full disk (ENOSPC) or a broken one
// (EIO).
class FailingWrites {
 public:
  explicit FailingWrites(int error);
  ~FailingWrites();
  FailingWrites(const FailingWrites&) = delete;
  FailingWrites& operator=(const FailingWrites&) = delete;
};

// During its lifetime, the n-th of SQLite's reads (from 1) fails with EIO.
class FailingRead {
 public:
  explicit FailingRead(int nth);
  ~FailingRead();
  FailingRead(const FailingRead&) = delete;
  FailingRead& operator=(const FailingRead&) = delete;

  [[nodiscard]] static bool failed();
};

// During its lifetime, the n-th of SQLite's allocations (from 1) fails.
class FailingAllocation {
 public:
  explicit FailingAllocation(int nth);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  [[nodiscard]] static bool failed();
};

// During its lifetime, looks at each file just before it is renamed; the rename may fail with EIO.
class WatchedRename {
 public:
  explicit WatchedRename(bool fails);
  ~WatchedRename();
  WatchedRename(const WatchedRename&) = delete;
  WatchedRename& operator=(const WatchedRename&) = delete;

  [[nodiscard]] static std::size_t size();   // of the file when it was renamed
  [[nodiscard]] static std::size_t syncs();  // before that
};

// During its lifetime, each sync fails with EIO.
class FailingSyncs {
 public:
  FailingSyncs();
  ~FailingSyncs();
  FailingSyncs(const FailingSyncs&) = delete;
  FailingSyncs& operator=(const FailingSyncs&) = delete;
};

}  // namespace host
