#include "DataStorage.h"

#include <gtest/gtest.h>

#include <string>

#include "clock/VirtualClock.h"
#include "framework/HostContext.h"
#include "services/MemoryDataAccess.h"
#include "support/LogCapture.h"
#include "support/Part.h"

namespace {

constexpr const char* kSchema = "Schema";
constexpr const char* kNoItems = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Settings></Settings>";

std::string document(const std::string& elements) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Settings>" + elements + "</Settings>";
}

class Settings : public testing::Test {
 protected:
  Settings() {
    m_context.add("DataAccessServiceIfc", &m_access);
    EXPECT_TRUE(m_storage.findDataAccessService());
  }

  host::VirtualClock m_clock;
  host::HostContext m_context{m_clock};
  host::MemoryDataAccess m_access;
  DataStorage m_storage{m_context, kSchema};
};

TEST(SettingsWithoutStore, DoNotUseAServiceThatIsNoStore) {
  support::Part other;
  host::VirtualClock clock;
  host::HostContext context(clock);
  context.add("DataAccessServiceIfc", &other);
  DataStorage storage(context, kSchema);
  EXPECT_FALSE(storage.findDataAccessService());
}

TEST_F(Settings, AreStoredUnderTheirSchema) {
  EXPECT_TRUE(m_storage.setDataItem("Key", "value"));
  EXPECT_EQ(m_access.getItem(kSchema, "Key"), "value");
  EXPECT_EQ(m_access.getItem("Other", "Key"), std::nullopt);
  EXPECT_STREQ(DASUtilsStrings::ClockSettingsSchema, "ClockSettings");
}

TEST_F(Settings, AreRefusedIfXmlCannotCarryThem) {
  const support::LogCapture log;
  EXPECT_FALSE(m_storage.setDataItem("A", "\xED\xA0\x80"));
  EXPECT_EQ(m_access.setsAsked(), 0U);
  EXPECT_TRUE(log.has(3, "setting \"A\" refused: XML cannot carry it")) << log.text();
}

TEST_F(Settings, AreRefusedIfTheKeyIsNoElementName) {
  for (const std::string key : {"", "a b", "<", "1"}) {
    EXPECT_FALSE(m_storage.setDataItem(key, "value")) << key;
  }
}

// Another program may have stored them.
TEST_F(Settings, AreLeftOutIfXmlCannotCarryThem) {
  const support::LogCapture log;
  EXPECT_TRUE(m_access.setItem(kSchema, "A", "\x02"));
  EXPECT_TRUE(m_access.setItem(kSchema, "<bad>", "x"));
  EXPECT_TRUE(m_storage.setDataItem("B", "2"));
  EXPECT_EQ(m_storage.getDataItems("A <bad> B"), document("<B>2</B>"));
  EXPECT_TRUE(log.has(3, "setting \"A\" left out: XML cannot carry it")) << log.text();
}

TEST_F(Settings, AreEmptyWhenTheStoreCannotBeRead) {
  EXPECT_TRUE(m_storage.setDataItem("A", "1"));
  m_access.refuseGets(true);
  EXPECT_EQ(m_storage.getDataItems("A"), kNoItems);
  m_access.refuseGets(false);
  EXPECT_EQ(m_storage.getDataItems("A"), document("<A>1</A>"));
}

TEST(MemoryDataAccess, FailsOnRequest) {
  host::MemoryDataAccess access;
  access.refuseSets(1, 2);
  EXPECT_TRUE(access.setItem("s", "k", "1"));
  EXPECT_FALSE(access.setItem("s", "k", "2"));
  EXPECT_FALSE(access.setItem("s", "k", "3"));
  EXPECT_TRUE(access.setItem("s", "k2", "4"));
  EXPECT_EQ(access.getItem("s", "k"), "1");
  EXPECT_EQ(access.setsAsked(), 4U);
}

TEST(MemoryDataAccess, KeepsSchemaAndKeyApart) {
  host::MemoryDataAccess access;
  EXPECT_TRUE(access.setItem("a", "bc", "1"));
  EXPECT_TRUE(access.setItem("ab", "c", "2"));
  EXPECT_EQ(access.getItem("a", "bc"), "1");
  EXPECT_EQ(access.getItem("ab", "c"), "2");
}

}  // namespace
