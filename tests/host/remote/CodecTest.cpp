// What every codec does.
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "Method.h"
#include "remote/CodecTable.h"
#include "remote/Frame.h"
#include "support/MethodText.h"

namespace host {
namespace {

using namespace std::string_literals;

class EachCodec : public testing::TestWithParam<std::string> {
 protected:
  std::string encode(Method method) {
    std::stringstream stream;
    codec().encode(method, stream);
    return stream.str();
  }
  bool decode(const std::string& bytes, Method& method) {
    std::stringstream stream(bytes);
    return codec().decode(stream, method);
  }
  MessageCodec& codec() { return *m_table.find(GetParam()); }

 private:
  CodecTable m_table;
};

Method everyType() {
  Method method("everyType", Method::reply);
  method.addIntParameter("zero", 0, Parameter::in);
  method.addIntParameter("least", std::numeric_limits<int>::min(), Parameter::out);
  method.addIntParameter("most", std::numeric_limits<int>::max(), Parameter::in);
  method.addIntParameter("negative", -1, Parameter::in);
  method.addIntParameter("byte", 200, Parameter::in);
  method.addIntParameter("twoBytes", -30000, Parameter::in);
  method.addStringParameter("empty", "", Parameter::out);
  method.addStringParameter("", "nameless", Parameter::in);
  method.addStringParameter("text", "\"quoted\"\n\t\\ \xc3\xbc \0 end"s, Parameter::in);
  method.addStringParameter("long", std::string(70000, 'l'), Parameter::in);
  method.addBoolParameter("yes", true, Parameter::out);
  method.addBoolParameter("no", false, Parameter::in);
  method.addIntParameter("no", 5, Parameter::in);
  return method;
}

TEST_P(EachCodec, ReadsWhatItWrote) {
  for (const Method& method :
       {Method("getTime", Method::call), Method("", Method::reply), everyType()}) {
    Method decoded("other", Method::call);
    decoded.addIntParameter("leftOver", 1, Parameter::in);
    ASSERT_TRUE(decode(encode(method), decoded));
    EXPECT_EQ(support::textOf(decoded), support::textOf(method));
  }
}

TEST_P(EachCodec, ReadsThousandsOfParameters) {
  Method method("many", Method::call);
  for (int i = 0; i < 20000; ++i) {
    method.addIntParameter(("p" + std::to_string(i)).c_str(), i, Parameter::in);
  }
  Method decoded;
  ASSERT_TRUE(decode(encode(method), decoded));
  EXPECT_EQ(decoded.getParameters().size(), 20000U);
  int last = 0;
  EXPECT_TRUE(decoded.getIntParameter("p19999", last, Parameter::in));
  EXPECT_EQ(last, 19999);
}

TEST_P(EachCodec, RefusesEveryTruncationAndLeavesTheMethodUnchanged) {
  Method method("setTime", Method::call);
  method.addIntParameter("setTimeHours", 70000, Parameter::in);
  method.addStringParameter("text", "some", Parameter::out);
  method.addBoolParameter("flag", true, Parameter::in);
  const std::string whole = encode(method);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    Method decoded("before", Method::reply);
    EXPECT_FALSE(decode(whole.substr(0, size), decoded));
    EXPECT_EQ(decoded.getName(), "before");
  }
}

TEST_P(EachCodec, RefusesBytesAfterAMethod) {
  const std::string whole = encode(everyType());
  Method decoded;
  for (const char* const rest : {"\xc0", "x", "{}", "\x93"}) {
    EXPECT_FALSE(decode(whole + rest, decoded)) << rest;
  }
}

TEST_P(EachCodec, RefusesMoreThanAFrameHolds) {
  Method method("large", Method::call);
  method.addStringParameter("text", std::string(kMaxPayload + 1, 'x'), Parameter::in);
  Method decoded;
  EXPECT_FALSE(decode(encode(method), decoded));
}

TEST_P(EachCodec, SurvivesEveryChangeOfOneByte) {
  Method method("setDate", Method::call);
  method.addIntParameter("setDateDay", 31, Parameter::in);
  method.addStringParameter("text", "some", Parameter::in);
  const std::string whole = encode(method);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (int value = 0; value < 256; ++value) {
      std::string changed = whole;
      changed[at] = static_cast<char>(value);
      Method decoded;
      if (!decode(changed, decoded)) continue;
      Method again;
      EXPECT_TRUE(decode(encode(decoded), again)) << at << ' ' << value;
      EXPECT_EQ(support::textOf(again), support::textOf(decoded)) << at << ' ' << value;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Codecs, EachCodec, testing::ValuesIn(CodecTable::names()),
                         [](const auto& codec) { return codec.param; });

TEST(CodecTable, KnowsNoOtherName) {
  CodecTable table;
  for (const char* const name : {"", "MSGPACK", "msgpack ", "cbor"}) {
    EXPECT_EQ(table.find(name), nullptr) << name;
  }
  EXPECT_NE(table.find(kDefaultCodec), nullptr);
  EXPECT_EQ(table.find("json"), table.find("json"));
}

}  // namespace
}  // namespace host
