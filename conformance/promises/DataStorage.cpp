#include "DataStorage.h"

#include <string>
#include <thread>
#include <vector>

#include "Context.h"
#include "Promise.h"
#include "XmlParser.h"

namespace {

// A context without any service.
class NoServices final : public Context {
 public:
  Executable* getService(const std::string& /*name*/) override { return nullptr; }
  int createTimer(Executable& /*owner*/, unsigned int /*period*/) override { return 0; }
  void startTimer(int /*timer*/) override {}
  void stopTimer(int /*timer*/) override {}
  void cancelTimer(int /*timer*/) override {}
  void deleteTimer(int /*timer*/) override {}
};

// What the document of settings says, in order: "<Key=value>" for each element within the root.
struct SettingsRead {
  int depth = 0;
  std::string value;
  std::string all;

  static SettingsRead& of(void* userData) { return *static_cast<SettingsRead*>(userData); }
  static void start(void* userData, const char* /*name*/, const char** /*attributes*/) {
    ++of(userData).depth;
    of(userData).value.clear();
  }
  static void characters(void* userData, const char* text, int length) {
    of(userData).value.assign(text, static_cast<std::size_t>(length));
  }
  static void end(void* userData, const char* name) {
    SettingsRead& read = of(userData);
    if (read.depth-- > 1) read.all += "<" + std::string(name) + "=" + read.value + ">";
    read.value.clear();
  }
};

class DataStoragePromise : public conformance::Promise {
 protected:
  // A new view of the settings on every call, as after a restart.
  std::unique_ptr<DataStorage> settings(const char* schema = DASUtilsStrings::ClockSettingsSchema) {
    auto view = std::make_unique<DataStorage>(platform().context(), schema);
    EXPECT_TRUE(view->findDataAccessService());
    return view;
  }
  std::string read(const std::string& keys) {
    const std::string document = settings()->getDataItems(keys);
    SettingsRead notes;
    XmlParser parser(&notes, &SettingsRead::start, &SettingsRead::end, &SettingsRead::characters);
    EXPECT_TRUE(parser.parseMessage(document.data(), static_cast<int>(document.size())))
        << document;
    return notes.all;
  }
};

TEST_F(DataStoragePromise, IsEmptyAndRefusesWithoutItsService) {
  promises("False when there is none: reads are then empty and writes are refused.");
  NoServices context;
  DataStorage view(context, DASUtilsStrings::ClockSettingsSchema);
  EXPECT_FALSE(view.findDataAccessService());
  EXPECT_FALSE(view.setDataItem("DateFormat", "1"));
  EXPECT_EQ(view.getDataItems("DateFormat"), "");
}

TEST_F(DataStoragePromise, ReturnsTheValueStoredLast) {
  promises("Stores a value that XML can carry.");
  const auto view = settings();
  EXPECT_TRUE(view->setDataItem("DateFormat", "1"));
  EXPECT_TRUE(view->setDataItem("DateFormat", "2"));
  EXPECT_TRUE(view->setDataItem("TimeFormat", "0"));
  EXPECT_EQ(read("DateFormat"), "<DateFormat=2>");
  EXPECT_EQ(read("TimeFormat"), "<TimeFormat=0>");
}

TEST_F(DataStoragePromise, IsBoundToOneSchema) {
  promises("A service's view of the device's persistent settings, bound to one schema.");
  EXPECT_TRUE(settings("OtherSettings")->setDataItem("DateFormat", "1"));
  EXPECT_EQ(read("DateFormat"), "");
  EXPECT_TRUE(settings()->setDataItem("DateFormat", "2"));
  EXPECT_EQ(read("DateFormat"), "<DateFormat=2>");
}

TEST_F(DataStoragePromise, IsDurable) {
  promises("Each accepted setDataItem is durable when it returns.");
  EXPECT_TRUE(settings()->setDataItem("FallbackDateTime", "2030-01-02T03:04:05+00:00"));
  platform().restart();
  EXPECT_EQ(read("FallbackDateTime"), "<FallbackDateTime=2030-01-02T03:04:05+00:00>");
}

TEST_F(DataStoragePromise, KeepsTheOldValueWhenItRefuses) {
  promises("False when it was not stored: the old value then remains.");
  const auto view = settings();
  EXPECT_TRUE(view->setDataItem("DateFormat", "1"));
  platform().refuseSettings(true);
  EXPECT_FALSE(view->setDataItem("DateFormat", "2"));
  EXPECT_FALSE(view->setDataItem("TimeFormat", "1"));
  EXPECT_EQ(read("DateFormat TimeFormat"), "<DateFormat=1>");
  platform().refuseSettings(false);
  EXPECT_TRUE(view->setDataItem("DateFormat", "2"));
  EXPECT_EQ(read("DateFormat TimeFormat"), "<DateFormat=2>");
}

TEST_F(DataStoragePromise, HasAnElementForEachKey) {
  promises(
      "One XML document with an element for each stored key of `keys` (separated by single "
      "spaces), "
      "named as the key");
  const auto view = settings();
  for (const char* const key : {"A", "B", "C"}) EXPECT_TRUE(view->setDataItem(key, key));
  const std::string all = read("A B C");
  for (const char* const element : {"<A=A>", "<B=B>", "<C=C>"})
    EXPECT_NE(all.find(element), std::string::npos) << all;
  EXPECT_EQ(all.size(), 15U) << all;
  EXPECT_EQ(read("B"), "<B=B>");
}

TEST_F(DataStoragePromise, LeavesOutKeysWithoutAValue) {
  promises("Keys without a value are left out");
  EXPECT_EQ(read("A B"), "");
  EXPECT_TRUE(settings()->setDataItem("B", "2"));
  EXPECT_EQ(read("A B C"), "<B=2>");
}

TEST_F(DataStoragePromise, EscapesTheValues) {
  promises("holding the value as escaped text, in UTF-8, inside one enclosing element.");
  const auto view = settings();
  for (const char* const value : {"&",
                                  "<",
                                  ">",
                                  "]]>",
                                  "<![CDATA[x]]>",
                                  "&amp;",
                                  "&#13;",
                                  "</A>",
                                  "\"'",
                                  " a b ",
                                  "\n",
                                  "\t",
                                  "\r",
                                  "\r\n",
                                  "\x7F",
                                  "caf\xC3\xA9",
                                  "\xC2\x85",
                                  "\xE2\x80\xA8",
                                  "\xEE\x80\x80",
                                  "\xEF\xBF\xBD",
                                  "\xF4\x8F\xBF\xBF"}) {
    ASSERT_TRUE(view->setDataItem("A", value)) << value;
    EXPECT_EQ(read("A"), "<A=" + std::string(value) + ">");
  }
}

// It would make the whole document malformed: after a restart, all settings would be lost.
TEST_F(DataStoragePromise, RefusesWhatNoDocumentCanCarry) {
  promises("Stores a value that XML can carry. False when it was not stored");
  const auto view = settings();
  EXPECT_TRUE(view->setDataItem("DateFormat", "1"));
  for (const std::string& value :
       {std::string("\0", 1), std::string("a\x01z"), std::string("\xFF")})
    EXPECT_FALSE(view->setDataItem("NTPsharedSecret", value));
  EXPECT_EQ(read("DateFormat NTPsharedSecret"), "<DateFormat=1>");
}

TEST_F(DataStoragePromise, AnyThreadMayCall) {
  promises("Thread: any.");
  const auto view = settings();
  const auto storeAs = [&](const std::string& key) {
    for (int i = 0; i < 20; ++i) {
      EXPECT_TRUE(view->setDataItem(key, std::to_string(i)));
      const std::string document = view->getDataItems(key);
      EXPECT_NE(document.find(">" + std::to_string(i) + "<"), std::string::npos) << document;
    }
  };
  std::thread other(storeAs, "A");
  storeAs("B");
  other.join();
  EXPECT_EQ(read("A B"), "<A=19><B=19>");
}

}  // namespace
