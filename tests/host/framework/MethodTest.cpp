#include "Method.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "support/MethodText.h"

namespace {

using support::textOf;

TEST(Method, StartsAsACallWithoutNameAndParameters) {
  EXPECT_EQ(textOf(Method()), "call \n");
  EXPECT_EQ(textOf(Method(nullptr, Method::reply)), "reply \n");
}

Method zoneEvent(const char* name, Method::methodTypes type, const char* parameter,
                 const std::string& zone, Parameter::directions direction) {
  Method event(name, type);
  event.addStringParameter(parameter, zone, direction);
  return event;
}

TEST(Method, EqualsAnotherWhenNothingDiffers) {
  const auto call = Method::call;
  const auto in = Parameter::in;
  const Method event = zoneEvent("changed", call, "zone", "CET", in);
  EXPECT_TRUE(event == zoneEvent("changed", call, "zone", "CET", in));
  EXPECT_FALSE(event == zoneEvent("change", call, "zone", "CET", in));
  EXPECT_FALSE(event == zoneEvent("changed", Method::reply, "zone", "CET", in));
  EXPECT_FALSE(event == zoneEvent("changed", call, "Zone", "CET", in));
  EXPECT_FALSE(event == zoneEvent("changed", call, "zone", "CES", in));
  EXPECT_FALSE(event == zoneEvent("changed", call, "zone", "CET", Parameter::out));
  EXPECT_FALSE(event == Method("changed", call));

  Method one("n", call);
  Method two("n", call);
  Method yes("n", call);
  one.addIntParameter("v", 1, in);
  two.addIntParameter("v", 2, in);
  yes.addBoolParameter("v", true, in);
  EXPECT_FALSE(one == two);
  EXPECT_FALSE(one == yes);
}

TEST(Method, KeepsTheOrderOfItsParameters) {
  Method method("m", Method::reply);
  method.addStringParameter("b", "text", Parameter::out);
  method.addIntParameter("a", -5, Parameter::in);
  method.addBoolParameter("c", true, Parameter::in);
  EXPECT_EQ(textOf(method), "reply m\nout string b=text\nin int a=-5\nin bool c=true\n");
}

TEST(Method, KeepsEveryValue) {
  const auto expectKept = [](auto add, auto get, const auto& value, auto read) {
    Method method;
    (method.*add)("name", value, Parameter::in);
    EXPECT_TRUE((method.*get)("name", read, Parameter::in));
    EXPECT_EQ(read, value);
  };
  using Limits = std::numeric_limits<int>;
  for (const int value : {0, -1, Limits::max(), Limits::min()}) {
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

TEST(Method, FindsAParameterByNameDirectionAndType) {
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
}

TEST(Method, LeavesTheValueUntouchedWithoutAMatch) {
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
  EXPECT_FALSE(method.getIntParameter(nullptr, number, Parameter::in));
  EXPECT_FALSE(method.getIntParameter("number", number, Parameter::out));
  EXPECT_FALSE(method.getBoolParameter("number", flag, Parameter::in));
  EXPECT_FALSE(method.getBoolParameter("flag", flag, Parameter::out));
  EXPECT_FALSE(method.getStringParameter("number", text, Parameter::in));
  EXPECT_FALSE(method.getStringParameter("text", text, Parameter::out));
  EXPECT_EQ(number, 42);
  EXPECT_FALSE(flag);
  EXPECT_EQ(text, "old");
}

TEST(Method, IsAValue) {
  Method original("m", Method::reply);
  original.addStringParameter("s", "text", Parameter::out);
  const Method copy(original);
  Method assigned;
  assigned = original;
  original.reset("other", Method::call);
  EXPECT_EQ(textOf(original), "call other\n");
  for (const Method& kept : {copy, assigned})
    EXPECT_EQ(textOf(kept), "reply m\nout string s=text\n");
}

}  // namespace
