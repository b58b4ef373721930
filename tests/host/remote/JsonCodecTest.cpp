#include "remote/JsonCodec.h"

#include <gtest/gtest.h>

#include <sstream>

#include "Method.h"
#include "support/MethodText.h"

namespace host {
namespace {

bool decodeText(const std::string& text, Method& method) {
  std::stringstream stream(text);
  return JsonCodec().decode(stream, method);
}

TEST(JsonCodec, WritesAllMembersInOrder) {
  Method method("setTime", Method::reply);
  method.addIntParameter("setTimeHours", -8, Parameter::in);
  method.addBoolParameter("setTimeReturn", true, Parameter::out);
  method.addStringParameter("text", "a\"b", Parameter::out);
  std::stringstream stream;
  JsonCodec().encode(method, stream);
  EXPECT_EQ(stream.str(), R"({"name":"setTime","type":1,"parameters":[)"
                          R"({"name":"setTimeHours","direction":0,"value":-8},)"
                          R"({"name":"setTimeReturn","direction":1,"value":true},)"
                          R"({"name":"text","direction":1,"value":"a\"b"}]})");
}

TEST(JsonCodec, ReplacesBytesThatAreNotUtf8) {
  Method method("m", Method::call);
  method.addStringParameter("p", "a\xff z", Parameter::in);
  std::stringstream stream;
  JsonCodec().encode(method, stream);
  EXPECT_NE(stream.str().find("a\xef\xbf\xbd z"), std::string::npos);
}

struct AcceptedText {
  const char* text;
  const char* meaning;
};

TEST(JsonCodec, ReadsMembersInAnyOrderAndFillsInDefaults) {
  const AcceptedText cases[] = {
      {R"({"name":"getTime"})", "call getTime\n"},
      {R"( {"type":1 , "name":"" } )", "reply \n"},
      {R"({"parameters":[],"name":"m"})", "call m\n"},
      {R"({"parameters":[{"value":5,"name":"p"}],"name":"m"})", "call m\nin int p=5\n"},
      {R"({"name":"m","parameters":[{"name":"p","value":"5","direction":1}]})",
       "call m\nout string p=5\n"},
      {R"({"name":"m","parameters":[{"name":"","value":false},{"name":"q","value":-0}]})",
       "call m\nin bool =false\nin int q=0\n"},
      {R"({"name":"m","parameters":[{"name":"p","value":2147483647}]})",
       "call m\nin int p=2147483647\n"},
      {R"({"name":"m","parameters":[{"name":"p","value":-2147483648}]})",
       "call m\nin int p=-2147483648\n"},
      {R"({"name":"\u00fc"})", "call \xc3\xbc\n"},
  };
  for (const AcceptedText& accepted : cases) {
    Method method;
    ASSERT_TRUE(decodeText(accepted.text, method)) << accepted.text;
    EXPECT_EQ(support::textOf(method), accepted.meaning);
  }
}

TEST(JsonCodec, RefusesEveryOtherText) {
  const std::string refused[] = {
      "",
      " ",
      "null",
      "true",
      "5",
      "\"m\"",
      "[]",
      "{}",
      "{",
      "nonsense",
      R"(["m",0,[]])",
      R"({"name":"m"} x)",
      R"({"name":"m",})",
      R"({'name':'m'})",
      R"({"Name":"m"})",
      R"({"name":null})",
      R"({"name":5})",
      R"({"name":true})",
      R"({"name":["m"]})",
      R"({"name":{"name":"m"}})",
      R"({"name":"m","name":"m"})",
      R"({"name":"m","other":1})",
      R"({"name":"m","value":1})",
      R"({"type":0})",
      R"({"name":"m","type":2})",
      R"({"name":"m","type":-1})",
      R"({"name":"m","type":"0"})",
      R"({"name":"m","type":0.0})",
      R"({"name":"m","type":null})",
      R"({"name":"m","type":false})",
      R"({"name":"m","type":0,"type":0})",
      R"({"name":"m","parameters":null})",
      R"({"name":"m","parameters":{}})",
      R"({"name":"m","parameters":"p"})",
      R"({"name":"m","parameters":[],"parameters":[]})",
      R"({"name":"m","parameters":[5]})",
      R"({"name":"m","parameters":["p"]})",
      R"({"name":"m","parameters":[null]})",
      R"({"name":"m","parameters":[true]})",
      R"({"name":"m","parameters":[[]]})",
      R"({"name":"m","parameters":[{}]})",
      R"({"name":"m","parameters":[{"name":"p"}]})",
      R"({"name":"m","parameters":[{"value":5}]})",
      R"({"name":"m","parameters":[{"name":"p","value":null}]})",
      R"({"name":"m","parameters":[{"name":"p","value":1.5}]})",
      R"({"name":"m","parameters":[{"name":"p","value":1e3}]})",
      R"({"name":"m","parameters":[{"name":"p","value":[]}]})",
      R"({"name":"m","parameters":[{"name":"p","value":{}}]})",
      R"({"name":"m","parameters":[{"name":"p","value":2147483648}]})",
      R"({"name":"m","parameters":[{"name":"p","value":-2147483649}]})",
      R"({"name":"m","parameters":[{"name":"p","value":18446744073709551615}]})",
      R"({"name":"m","parameters":[{"name":"p","value":1,"value":1}]})",
      R"({"name":"m","parameters":[{"name":"p","name":"p","value":1}]})",
      R"({"name":"m","parameters":[{"name":5,"value":1}]})",
      R"({"name":"m","parameters":[{"name":"p\u0000q","value":1}]})",
      R"({"name":"m","parameters":[{"name":"p","value":1,"type":0}]})",
      R"({"name":"m","parameters":[{"name":"p","value":1,"direction":2}]})",
      R"({"name":"m","parameters":[{"name":"p","value":1,"direction":"0"}]})",
      R"({"name":"m","parameters":[{"name":"p","value":1,"direction":0,"direction":0}]})",
      "{\"name\":\"a\xff\"}",
      {"{\"name\":\"m\"}\0x", 14},
      // nested too deeply to be read
      std::string(1000000, '['),
      R"({"name":"m","parameters":)" + std::string(1000000, '['),
  };
  for (const std::string& text : refused) {
    Method method("before", Method::call);
    EXPECT_FALSE(decodeText(text, method)) << text.substr(0, 80);
    EXPECT_EQ(method.getName(), "before");
  }
}

}  // namespace
}  // namespace host
