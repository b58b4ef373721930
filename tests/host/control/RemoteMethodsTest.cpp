#include "control/RemoteMethods.h"

#include <gtest/gtest.h>

#include <set>

namespace host {
namespace {

TEST(RemoteMethodTable, HoldsTwentyThreeMethodsWithNamesOfTheirOwn) {
  const auto names = remoteMethodNames();
  EXPECT_EQ(names.size(), 23U);
  EXPECT_EQ(std::set(names.begin(), names.end()).size(), 23U);
  for (const std::string_view name : names) EXPECT_EQ(findRemoteMethod(name)->name, name);
  EXPECT_EQ(findRemoteMethod("GetTime"), nullptr);
  EXPECT_EQ(findRemoteMethod(""), nullptr);
}

TEST(RemoteMethodTable, OnlyOneMethodHasNoReply) {
  for (const RemoteMethod& method : remoteMethods()) {
    EXPECT_EQ(method.replies, method.name != "setTimeInt") << method.name;
    EXPECT_EQ(method.reply.empty(), !method.replies) << method.name;
  }
}

TEST(RemoteMethodTable, ParametersBearTheirMethodsName) {
  for (const RemoteMethod& method : remoteMethods()) {
    for (const auto& list : {method.request, method.reply}) {
      for (const MethodParameter& parameter : list) {
        const bool odd = method.name == "setTimeInt" && parameter.name == "setTime";
        EXPECT_TRUE(odd || parameter.name.starts_with(method.name)) << parameter.name;
      }
    }
  }
}

TEST(RemoteMethodTable, HoldsTheFourEvents) {
  EXPECT_EQ(remoteEventNames().size(), 4U);
  EXPECT_EQ(findRemoteEvent("timeChangeEvent")->request.size(), 3U);
  EXPECT_EQ(findRemoteEvent("getTime"), nullptr);
}

}  // namespace
}  // namespace host
