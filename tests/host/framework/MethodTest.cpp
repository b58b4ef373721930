#include "Method.h"

#include <gtest/gtest.h>

#include <string>

#include "support/MethodText.h"

namespace {

using support::textOf;

TEST(Method, MayHaveNoName) {
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

}  // namespace
