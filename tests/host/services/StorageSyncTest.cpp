// The syncs of Storage when it replaces a file, such as the service's script. Here, and not with
// the other tests of Storage, because this program replaces fsync.

#include <gtest/gtest.h>

#include <string>

#include "Storage.h"
#include "framework/StateFolder.h"
#include "host/services/StoreFaults.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

class SyncedStorage : public testing::Test {
 protected:
  SyncedStorage() { setStorageFolder(m_folder.path()); }
  ~SyncedStorage() override { setStorageFolder(m_before); }

  static bool replaceContent(std::string text) {
    constexpr auto kRead = std::ios_base::in;
    constexpr auto kWrite = std::ios_base::out;
    Storage storage;
    return storage.init("setupTZ.sh", kRead, kWrite) && storage.clear() &&
           storage.store(nullptr, text.data(), static_cast<int>(text.size())) && storage.shutdown();
  }
  [[nodiscard]] std::string content() const { return support::contentOf(m_folder / "setupTZ.sh"); }

  const std::string m_before = storageFolder();
  const support::TemporaryFolder m_folder;
};

TEST_F(SyncedStorage, NewContentSyncsTheFileAndItsFolder) {
  for (const char* const text : {"one", "another"}) {
    static_cast<void>(takeSyncs());
    static_cast<void>(takeFolderSyncs());
    EXPECT_TRUE(replaceContent(text));
    EXPECT_EQ(takeSyncs(), 2U);
    EXPECT_EQ(takeFolderSyncs(), 1U);
  }
}

TEST_F(SyncedStorage, UnchangedContentNeedsNoSync) {
  ASSERT_TRUE(replaceContent("one"));
  static_cast<void>(takeSyncs());
  EXPECT_TRUE(replaceContent("one"));
  EXPECT_EQ(takeSyncs(), 0U);
}

// The rename comes after the sync, so a power cut in between keeps the old content.
TEST_F(SyncedStorage, ContentThatCannotBeSyncedDoesNotReplaceTheFile) {
  ASSERT_TRUE(replaceContent("old"));
  const FailingSyncs failing;
  EXPECT_FALSE(replaceContent("new"));
  EXPECT_EQ(content(), "old");
}

}  // namespace
}  // namespace host
