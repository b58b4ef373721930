// The syncs of Storage when it replaces a file, such as the service's script. Here, and not with
// the other tests of Storage, because this program replaces fsync.

#include <gtest/gtest.h>

#include "host/framework/StorageFolder.h"
#include "host/services/StoreFaults.h"

namespace host {
namespace {

TEST_F(StorageFolder, NewContentSyncsTheFileAndItsFolder) {
  for (const char* const text : {"one", "another"}) {
    static_cast<void>(takeSyncs());
    static_cast<void>(takeFolderSyncs());
    EXPECT_TRUE(replaceContent(text));
    EXPECT_EQ(takeSyncs(), 2U);
    EXPECT_EQ(takeFolderSyncs(), 1U);
  }
}

TEST_F(StorageFolder, UnchangedContentNeedsNoSync) {
  ASSERT_TRUE(replaceContent("one"));
  static_cast<void>(takeSyncs());
  EXPECT_TRUE(replaceContent("one"));
  EXPECT_EQ(takeSyncs(), 0U);
}

// The rename comes after the sync, so a power cut in between keeps the old content.
TEST_F(StorageFolder, ContentThatCannotBeSyncedDoesNotReplaceTheFile) {
  ASSERT_TRUE(replaceContent("old"));
  const FailingSyncs failing;
  EXPECT_FALSE(replaceContent("new"));
  EXPECT_EQ(content(), "old");
}

}  // namespace
}  // namespace host
