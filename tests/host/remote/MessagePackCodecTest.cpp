#include "remote/MessagePackCodec.h"

#include <gtest/gtest.h>

#include <sstream>

#include "Method.h"
#include "support/MethodText.h"

namespace host {
namespace {

using namespace std::string_literals;

bool decode(const std::string& bytes, Method& method) {
  std::stringstream stream(bytes);
  return MessagePackCodec().decode(stream, method);
}

TEST(MessagePackCodec, WritesNestedArraysInTheirShortestForm) {
  Method method("setTime", Method::call);
  method.addIntParameter("h", 8, Parameter::in);
  method.addBoolParameter("b", true, Parameter::out);
  method.addStringParameter("s", "xy", Parameter::in);
  std::stringstream stream;
  MessagePackCodec().encode(method, stream);
  EXPECT_EQ(stream.str(),
            "\x93\xa7setTime\x00\x93"
            "\x93\xa1h\x00\x08"
            "\x93\xa1"
            "b\x01\xc3"
            "\x93\xa1s\x00\xa2xy"s);
}

struct Accepted {
  std::string bytes;
  std::string text;
};

TEST(MessagePackCodec, ReadsEveryWidthOfNumberTextAndArray) {
  const Accepted cases[] = {
      {"\x93\xa1m\x00\x90"s, "call m\n"},
      {"\xdc\x00\x03\xd9\x01m\xcc\x01\xdd\x00\x00\x00\x00"s, "reply m\n"},
      {"\xdd\x00\x00\x00\x03\xda\x00\x01m\xd0\x01\xdc\x00\x00"s, "reply m\n"},
      {"\x93\xdb\x00\x00\x00\x01m\x00\x91\x93\xa1p\x00\xcd\x01\x00"s, "call m\nin int p=256\n"},
      {"\x93\xa1m\x00\x91\x93\xa1p\x01\xce\x7f\xff\xff\xff"s, "call m\nout int p=2147483647\n"},
      {"\x93\xa1m\x00\x91\x93\xa1p\x00\xcf\x00\x00\x00\x00\x00\x00\x00\x05"s,
       "call m\nin int p=5\n"},
      {"\x93\xa1m\x00\x91\x93\xa1p\x00\xd3\x00\x00\x00\x00\x7f\xff\xff\xff"s,
       "call m\nin int p=2147483647\n"},
      {"\x93\xa1m\x00\x91\x93\xa1p\x00\xd3\xff\xff\xff\xff\x80\x00\x00\x00"s,
       "call m\nin int p=-2147483648\n"},
      {"\x93\xa1m\x00\x91\x93\xa1p\x00\xe0"s, "call m\nin int p=-32\n"},
      {"\x93\xa1m\x00\x91\x93\xa1p\x00\xc2"s, "call m\nin bool p=false\n"},
  };
  for (const Accepted& accepted : cases) {
    Method method;
    ASSERT_TRUE(decode(accepted.bytes, method)) << accepted.text;
    EXPECT_EQ(support::textOf(method), accepted.text);
  }
}

TEST(MessagePackCodec, RefusesEveryOtherShapeAndType) {
  const std::string refused[] = {
      ""s,
      "\xc0"s,   // nil
      "\x80"s,   // a map
      "\xa1m"s,  // a text
      "\x05"s,   // a number
      "\x90"s,   // arrays too short and too long
      "\x92\xa1m\x00"s, "\x94\xa1m\x00\x90\x00"s,
      "\xdd\xff\xff\xff\xff"s,  // announced only
      "\x93\x01\x00\x90"s,      // name: a number, nil, bytes, an array
      "\x93\xc0\x00\x90"s, "\x93\xc4\x01m\x00\x90"s, "\x93\x91\xa1m\x00\x90"s,
      "\x93\xa1m\x02\x90"s,  // type: 2, -1, a text, true, 1.0, nil
      "\x93\xa1m\xff\x90"s, "\x93\xa1m\xa1\x31\x90"s, "\x93\xa1m\xc3\x90"s,
      "\x93\xa1m\xca\x3f\x80\x00\x00\x90"s, "\x93\xa1m\xc0\x90"s,
      "\x93\xa1m\x00\xc0"s,  // parameters: nil, a text, a map
      "\x93\xa1m\x00\xa0"s, "\x93\xa1m\x00\x80"s,
      "\x93\xa1m\x00\x91\x05"s,  // a parameter: a number, a text, too short, too long
      "\x93\xa1m\x00\x91\xa1p"s, "\x93\xa1m\x00\x91\x90"s, "\x93\xa1m\x00\x91\x92\xa1p\x00"s,
      "\x93\xa1m\x00\x91\x94\xa1p\x00\x05\x05"s,
      "\x93\xa1m\x00\x91\x93\x01\x00\x05"s,  // its name: a number, one with a zero byte
      "\x93\xa1m\x00\x91\x93\xa3p\x00q\x00\x05"s,
      "\x93\xa1m\x00\x91\x93\xa1p\x02\x05"s,  // its direction: 2, a text
      "\x93\xa1m\x00\x91\x93\xa1p\xa1\x30\x05"s,
      "\x93\xa1m\x00\x91\x93\xa1p\x00\xc0"s,  // its value: nil, an array, a map, bytes, an
                                              // extension
      "\x93\xa1m\x00\x91\x93\xa1p\x00\x90"s, "\x93\xa1m\x00\x91\x93\xa1p\x00\x80"s,
      "\x93\xa1m\x00\x91\x93\xa1p\x00\xc4\x01x"s, "\x93\xa1m\x00\x91\x93\xa1p\x00\xd4\x01x"s,
      "\x93\xa1m\x00\x91\x93\xa1p\x00\xca\x3f\x80\x00\x00"s,  // 1.0, in both widths
      "\x93\xa1m\x00\x91\x93\xa1p\x00\xcb\x3f\xf0\x00\x00\x00\x00\x00\x00"s,
      "\x93\xa1m\x00\x91\x93\xa1p\x00\xce\x80\x00\x00\x00"s,  // one above 32 bits, one below
      "\x93\xa1m\x00\x91\x93\xa1p\x00\xd3\xff\xff\xff\xff\x7f\xff\xff\xff"s,
      "\x93\xa1m\x00\x91\x93\xa1p\x00\xcf\xff\xff\xff\xff\xff\xff\xff\xff"s,
      "\x93\xa1m\x00\x91\x93\xdb\xff\xff\xff\xffp"s,  // a text of 4 GiB announced
      "\xc1"s,                                        // never used
  };
  for (const std::string& bytes : refused) {
    Method method("before", Method::call);
    EXPECT_FALSE(decode(bytes, method)) << testing::PrintToString(bytes);
    EXPECT_EQ(method.getName(), "before");
  }
}

TEST(MessagePackCodec, RefusesDeepNestingAtOnce) {
  Method method;
  EXPECT_FALSE(decode(std::string(1000000, '\x91'), method));
  EXPECT_FALSE(decode("\x93\xa1m\x00" + std::string(1000000, '\x91'), method));
}

}  // namespace
}  // namespace host
