#include "verbs/VerbPrinters.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "verbs/JsonText.h"

namespace host {
namespace {

std::string printed(void (*print)(const Json&, std::ostream&), const char* json) {
  std::ostringstream out;
  print(Json::parse(json), out);
  return out.str();
}

TEST(VerbPrinters, PrintReplyParametersInTheirOrder) {
  EXPECT_EQ(printed(printCall, R"({"reply":{"b":"x y","a":-5,"c":true,"d":""}})"),
            "b=x y\na=-5\nc=true\nd=\n");
  EXPECT_EQ(printed(printCall, R"({"reply":{}})"), "");
}

TEST(VerbPrinters, PrintAnEventOnOneLine) {
  EXPECT_EQ(printed(printEvent, R"({"event":"e","parameters":{"hours":3,"zone":"LOC"}})"),
            "e hours=3 zone=LOC\n");
  EXPECT_EQ(printed(printEvent,
                    R"({"event":"e","parameters":{"a":1},"utc":"U","local":"L","utcSeconds":5})"),
            "e a=1 utc=U local=L\n");
}

TEST(VerbPrinters, PrintTheBareValue) {
  EXPECT_EQ(printed(printValue, R"({"value":"two words"})"), "two words\n");
  EXPECT_EQ(printed(printValue, R"({"value":""})"), "\n");
}

// DEL, and U+009B, which starts a terminal sequence as ESC [ does.
TEST(VerbPrinters, EscapeWhatATerminalInterprets) {
  const char* const shown = "\"\xC3\xBC\\u007f\\u009b2J\"";
  const std::string value =
      "\xC3\xBC\x7F\xC2\x9B"
      "2J";
  EXPECT_EQ(printed(printValue, Json{{"value", value}}.dump().c_str()), shown + std::string("\n"));
  EXPECT_EQ(printed(printCall, Json{{"reply", {{"a", value}}}}.dump().c_str()),
            "a=" + std::string(shown) + '\n');
  EXPECT_EQ(
      printed(printEvent, Json{{"event", "e"}, {"parameters", {{"a", value}}}}.dump().c_str()),
      "e a=" + std::string(shown) + '\n');
  EXPECT_EQ(jsonLine(value), shown);
  EXPECT_EQ(Json::parse(jsonLine(value)), value);
}

// Each printed member, with a terminal sequence in it.
TEST(VerbPrinters, EscapeEachMember) {
  const Json bad = "\x1B[2J\n";
  Json row;
  for (const char* const name :
       {"key",    "value", "settable", "state", "number", "time",  "failure",
        "origin", "text",  "count",    "last",  "lost",   "level", "component",
        "file",   "line",  "what",     "cause", "who",    "from",  "to"})
    row[name] = bad;
  const Json rows = Json::array({row});
  const Json named = {{"\x1B[2J", bad}};
  const Json answer = {{"value", bad},    {"keys", rows},        {"records", rows},
                       {"entries", rows}, {"note", bad},         {"utc", bad},
                       {"plugin", bad},   {"event", bad},        {"clock", named},
                       {"reply", named},  {"parameters", named}, {"changes", rows},
                       {"timers", rows},  {"upcoming", rows}};
  for (const auto print : {printCall, printEvent, printValue, printKeys, printClock, printStatus,
                           printHistory, printUpcoming, printLog, printSecurityLog}) {
    const std::string text = printed(print, answer.dump().c_str());
    EXPECT_EQ(text.find('\x1B'), std::string::npos) << jsonLine(text);
    EXPECT_NE(text.find("\\u001b[2J"), std::string::npos) << jsonLine(text);
  }
}

TEST(VerbPrinters, PrintWhatIsUpcoming) {
  const std::string blanks(30, ' ');
  EXPECT_EQ(printed(printUpcoming, R"({"upcoming":[
                {"time":"T","local":"L","kind":"zone change","before":-18000,"after":-14400},
                {"time":"T","local":"2026-03-08T03:00:00-04:00","kind":"NTP restart","what":"w",
                 "latest":"E"}]})"),
            "T L" + blanks +
                " zone change UTC-05:00 -> UTC-04:00\n"
                "T 2026-03-08 03:00:00 (UTC-04:00) NTP restart w, at E at the latest\n");
}

TEST(VerbPrinters, PrintAChangeOnOneLine) {
  EXPECT_EQ(printed(printHistory, R"({"changes":[{"time":"T","what":"TimezoneOffset","from":"",
                    "to":"-5","cause":"set sntp-tz-offset","who":"device"},
                    {"time":"T","what":"clock","from":"A","to":"B","cause":"c","who":"w"}]})"),
            "T TimezoneOffset: (none) -> -5 (set sntp-tz-offset; device)\n"
            "T clock: A -> B (c; w)\n");
}

// What another program, or another version, may answer.
TEST(VerbPrinters, PrintWhatTheyCanOfRowsOfAnotherShape) {
  const std::string blank(54, ' ');
  EXPECT_EQ(printed(printKeys, R"({"keys":[1,{"settable":"no"}]})"),
            "KEY                       VALUE                       SETTABLE  STATE\n" + blank +
                "no        \n" + blank + "no        \n");
  EXPECT_EQ(printed(printSecurityLog, R"({"records":[7]})"), "  accepted device: \n");
}

TEST(VerbPrinters, PrintKeysAsATable) {
  EXPECT_EQ(printed(printKeys, R"({"keys":[{"key":"time","value":"now","settable":true,"state":4},
                                           {"key":"x","value":null,"settable":false,"state":0}]})"),
            "KEY                       VALUE                       SETTABLE  STATE\n"
            "time                      now                         yes       4\n"
            "x                                                     no        0\n");
}

TEST(VerbPrinters, ClipLongValuesToTheirColumn) {
  const auto value = [](const std::string& text) {
    const Json answer = {{"keys", {{{"key", "k"}, {"value", text}, {"state", 0}}}}};
    const std::string table = printed(printKeys, answer.dump().c_str());
    return table.substr(table.find('\n') + 1 + 26);
  };
  EXPECT_EQ(value(std::string(27, 'x')), std::string(27, 'x') + " no        0\n");
  EXPECT_EQ(value(std::string(28, 'x')), std::string(24, 'x') + "... no        0\n");
  EXPECT_EQ(value(std::string(23, 'x') + "\xC3\xBC___"),
            std::string(23, 'x') + "...  no        0\n");
  EXPECT_EQ(value("two\nlines"), "\"two\\nlines\"" + std::string(16, ' ') + "no        0\n");
}

TEST(VerbPrinters, PrintALogEntryOnOneLine) {
  const char* const entry =
      R"({"number":1,"time":"2016-06-16T00:00:00Z","level":5,"component":"ClockService",
          "text":"a\nb","file":"f.cpp","line":7})";
  EXPECT_EQ(printed(printLog, entry),
            "2016-06-16T00:00:00Z info     ClockService \"a\\nb\" (f.cpp:7)\n");
  EXPECT_EQ(printed(printLog, R"({"entries":[]})"), "");
}

TEST(VerbPrinters, PrintTheLevelOfTheLog) {
  EXPECT_EQ(printed(printLogLevel, R"({"ok":true,"level":4})"), "4 (note)\n");
  EXPECT_EQ(printed(printLogLevel, R"({"ok":true,"level":6,"before":0})"),
            "6 (trace), was 0 (fatal)\n");
}

TEST(VerbPrinters, PrintUnknownLevelsAsNumbers) {
  const std::pair<std::string, std::string> levels[] = {
      {"0", "fatal"}, {"6", "trace"}, {"7", "7"}, {"-1", "-1"}, {"9e9", "9000000000.0"}};
  for (const auto& [level, text] : levels) {
    const std::string entry = R"({"time":"T","component":"c","level":)" + level + "}";
    EXPECT_EQ(printed(printLog, (R"({"entries":[)" + entry + "]}").c_str()).find("T " + text + " "),
              0U)
        << level;
  }
}

TEST(VerbPrinters, PrintOriginAndRefusalOfASecurityRecord) {
  const char* const answer =
      R"json({"records":[{"number":2,"time":"T","failure":true,"origin":"uid 1, pid 2",
                          "text":"ClockSettings set data k(v)"}]})json";
  EXPECT_EQ(printed(printSecurityLog, answer),
            "2 T refused  uid 1, pid 2: ClockSettings set data k(v)\n");
}

TEST(VerbPrinters, PrintRepeatsAndLostSecurityRecords) {
  const char* const answer =
      R"json({"records":[{"number":5,"lost":2,"time":"T","failure":true,"text":"a","count":3,
                          "last":"U"}]})json";
  EXPECT_EQ(printed(printSecurityLog, answer),
            "- 2 could not be written\n5 T refused  device: a (3 times, last U)\n");
}

TEST(VerbPrinters, PrintTheNoteAfterTheSecurityLog) {
  const char* const answer =
      R"json({"records":[{"number":2,"time":"T","failure":false,"text":"a"}],"kept":10000,
              "dropped":1,"note":"records kept: 10000"})json";
  EXPECT_EQ(printed(printSecurityLog, answer),
            "2 T accepted device: a\nnote         records kept: 10000\n");
}

TEST(VerbPrinters, PrintTheStatusInRows) {
  EXPECT_EQ(printed(printStatus, R"({"shown":{"time":"07:31","date":"16.06.16","utc":"U",
    "local":"2016-06-16T07:31:00+02:00"},
    "system":"S","source":"by hand","byHand":true,
    "changed":{"time":"T","cause":"set simple-time","who":"device","from":"A","to":"B",
    "age":5},"systemChanged":{"time":"T","cause":"clock jump","who":"w","from":"C","to":"D"},
    "report":{"time":"R","age":3660},"saved":{"time":"V","age":-60},"network":"up",
    "ntp":{"server":"192.0.2.1","process":77,"said":"no answer"},
    "zone":{"tz":"LOC05:00","offset":-18000,"abbreviation":"LOC","daylight":true,"next":{"time":"N","offset":-14400}},
    "timers":[{"name":"time sync","time":"H","in":60},{"name":"date sync","time":"M","in":86400}],
    "clock":{"source":"virtual","speed":null,"uptime":90000},
    "variant":3,"softwareType":"","mac":"0001E3A1B2C3","logLevel":4,"clients":1,"plugin":"p",
    "socket":"s","state":"f","deviceRoot":"r","version":"v"})"),
            "shows        07:31 16.06.16\nutc          U\nlocal        2016-06-16 07:31:00 (LOC, "
            "UTC+02:00)\n"
            "system time  S, set at T (clock jump; w)\n"
            "source       by hand; until a restart it follows the uptime, not the system time\n"
            "changed      A -> B, 00:00:05 ago (set simple-time; device)\n"
            "last report  R, 01:01:00 ago\nsaved time   V, 00:01:00 ahead\nnetwork      up\n"
            "time server  192.0.2.1\nntp client   running, process 77\nclient log   no answer\n"
            "zone         UTC-05:00, daylight saving\ntz           LOC05:00\nnext change  N to "
            "UTC-04:00\n"
            "timers       time sync        H, in 00:01:00\n"
            "             date sync        M, in 1d 00:00:00\n"
            "speed        max\nuptime       1d 01:00:00\nvariant      3\n"
            "mac          0001E3A1B2C3\nlog level    4\nclients      1\nplug-in      p\n"
            "socket       s\nstate        f\ndevice root  r\nversion      v\n");
}

TEST(VerbPrinters, LeaveOutMissingMembers) {
  EXPECT_EQ(printed(printClock, R"({"utc":"U","speed":"paused","timers":3,"note":"n"})"),
            "utc          U\nspeed        paused\ntimers       3\nnote         n\n");
}

}  // namespace
}  // namespace host
