// What is on the disk when a storage file, such as the service's script, has been replaced. In this
// program because of its syncs.

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

TEST_F(SyncedStorage, NewContentIsOneSyncOfTheFileAndThenOneOfItsFolder) {
  for (const char* const text : {"one", "another"}) {
    static_cast<void>(takeSyncs());
    static_cast<void>(takeFolderSyncs());
    EXPECT_TRUE(replaceContent(text));
    EXPECT_EQ(takeSyncs(), 2U);
    EXPECT_EQ(takeFolderSyncs(), 1U);
  }
}

TEST_F(SyncedStorage, ContentThatIsThereAlreadyNeedsNoSync) {
  ASSERT_TRUE(replaceContent("one"));
  static_cast<void>(takeSyncs());
  EXPECT_TRUE(replaceContent("one"));
  EXPECT_EQ(takeSyncs(), 0U);
}

// So the name comes after the sync: a power cut between the two keeps the old content.
TEST_F(SyncedStorage, ContentThatCannotBeSyncedDoesNotGetTheName) {
  ASSERT_TRUE(replaceContent("old"));
  const FailingSyncs failing;
  EXPECT_FALSE(replaceContent("new"));
  EXPECT_EQ(content(), "old");
}

}  // namespace
}  // namespace host
