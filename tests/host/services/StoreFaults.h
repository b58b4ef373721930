#pragma once

#include <cstddef>

namespace host {

// What SQLite asks of the system, counted and made to fail. Thread: the test's.

// Syncs of any file since the last call.
[[nodiscard]] std::size_t takeSyncs();

// ... of folders alone, which the other counts, too.
[[nodiscard]] std::size_t takeFolderSyncs();

// While it lives, each write of SQLite to a file fails as on a full disk (ENOSPC) or a broken one
// (EIO).
class FailingWrites {
 public:
  explicit FailingWrites(int error);
  ~FailingWrites();
  FailingWrites(const FailingWrites&) = delete;
  FailingWrites& operator=(const FailingWrites&) = delete;
};

// While it lives, the n-th (1: the first) read of SQLite from a file fails with EIO.
class StumblingReads {
 public:
  explicit StumblingReads(int nth);
  ~StumblingReads();
  StumblingReads(const StumblingReads&) = delete;
  StumblingReads& operator=(const StumblingReads&) = delete;

  [[nodiscard]] static bool stumbled();
};

// While it lives, each sync fails with EIO.
class FailingSyncs {
 public:
  FailingSyncs();
  ~FailingSyncs();
  FailingSyncs(const FailingSyncs&) = delete;
  FailingSyncs& operator=(const FailingSyncs&) = delete;
};

}  // namespace host
