#include "Method.h"

#include <limits>
#include <string>

#include "MethodText.h"
#include "Promise.h"

namespace {

using conformance::textOf;
using IntLimits = std::numeric_limits<int>;

class MethodPromise : public conformance::Promise {
 protected:
  // Whether each value is what it was, after it was added and read.
  template <class Add, class Get, class Value>
  static void expectKept(Add add, Get get, const Value& value, Value read) {
    Method method;
    (method.*add)("name", value, Parameter::in);
    EXPECT_TRUE((method.*get)("name", read, Parameter::in));
    EXPECT_EQ(read, value);
  }
};

TEST_F(MethodPromise, StartsAsACallWithoutNameAndParameters) {
  promises("a call without name and parameters, for a codec to decode into");
  EXPECT_EQ(textOf(Method()), "call ");
}

TEST_F(MethodPromise, HasNameAndType) {
  promises("A remote call, its reply, or an event: a name and an ordered list of parameters.");
  EXPECT_EQ(textOf(Method("getTime", Method::call)), "call getTime");
  EXPECT_EQ(textOf(Method("getTime", Method::reply)), "reply getTime");
}

TEST_F(MethodPromise, KeepsTheOrderOfItsParameters) {
  promises("an ordered list of parameters.");
  Method method("m", Method::reply);
  method.addStringParameter("b", "text", Parameter::out);
  method.addIntParameter("a", -5, Parameter::in);
  method.addBoolParameter("c", true, Parameter::in);
  EXPECT_EQ(textOf(method), "reply m ->b='text' a=-5 c=true");
}

TEST_F(MethodPromise, KeepsEveryValue) {
  promises("Append one parameter.");
  for (const int value : {0, -1, IntLimits::max(), IntLimits::min()}) {
    expectKept(&Method::addIntParameter, &Method::getIntParameter, value, 42);
  }
  for (const std::string& value :
       {std::string(), std::string("a\0b\xFF", 4), std::string(1 << 20, 'x')}) {
    expectKept(&Method::addStringParameter, &Method::getStringParameter, value, std::string("old"));
  }
  for (const bool value : {false, true}) {
    expectKept(&Method::addBoolParameter, &Method::getBoolParameter, value, !value);
  }
}

TEST_F(MethodPromise, FindsAParameterByNameDirectionAndType) {
  promises("Read the first parameter of this name, direction and type.");
  Method method("m", Method::call);
  method.addStringParameter("x", "text", Parameter::in);
  method.addIntParameter("x", 1, Parameter::out);
  method.addIntParameter("x", 2, Parameter::in);
  method.addIntParameter("x", 3, Parameter::in);
  method.addBoolParameter("x", true, Parameter::in);
  int number = 0;
  EXPECT_TRUE(method.getIntParameter("x", number, Parameter::in));
  EXPECT_EQ(number, 2) << "the first";
  EXPECT_TRUE(method.getIntParameter("x", number, Parameter::out));
  EXPECT_EQ(number, 1);
  std::string text;
  EXPECT_TRUE(method.getStringParameter("x", text, Parameter::in));
  EXPECT_EQ(text, "text");
  bool flag = false;
  EXPECT_TRUE(method.getBoolParameter("x", flag, Parameter::in));
  EXPECT_TRUE(flag);
}

TEST_F(MethodPromise, LeavesTheValueUntouchedWithoutAMatch) {
  promises("False, and `value` untouched, when there is none.");
  Method method("m", Method::call);
  method.addIntParameter("number", 1, Parameter::in);
  method.addBoolParameter("flag", true, Parameter::in);
  method.addStringParameter("text", "t", Parameter::in);
  int number = 42;
  bool flag = false;
  std::string text = "old";
  for (const char* const name : {"", "Number", "numbe", "number2", "flag", "text"}) {
    EXPECT_FALSE(method.getIntParameter(name, number, Parameter::in)) << name;
  }
  EXPECT_FALSE(method.getIntParameter("number", number, Parameter::out));
  EXPECT_FALSE(method.getBoolParameter("number", flag, Parameter::in));
  EXPECT_FALSE(method.getBoolParameter("flag", flag, Parameter::out));
  EXPECT_FALSE(method.getStringParameter("number", text, Parameter::in));
  EXPECT_FALSE(method.getStringParameter("text", text, Parameter::out));
  EXPECT_EQ(number, 42);
  EXPECT_FALSE(flag);
  EXPECT_EQ(text, "old");
}

TEST_F(MethodPromise, ResetReplacesTheWholeContent) {
  promises("Replaces the whole content. For codecs.");
  Method method("m", Method::reply);
  method.addIntParameter("a", 1, Parameter::out);
  method.reset("other", Method::call);
  EXPECT_EQ(textOf(method), "call other");
}

TEST_F(MethodPromise, IsAValue) {
  promises("A value type; not shared between threads.");
  Method original("m", Method::reply);
  original.addStringParameter("s", "text", Parameter::out);
  const Method copy(original);
  Method assigned;
  assigned = original;
  original.reset("other", Method::call);
  for (const Method& kept : {copy, assigned}) EXPECT_EQ(textOf(kept), "reply m ->s='text'");
}

}  // namespace
