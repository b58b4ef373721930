#include "verbs/CallWords.h"

#include <gtest/gtest.h>

#include "verbs/UsageError.h"

namespace host {
namespace {

struct Accepted {
  const char* word;
  const char* name;
  Parameter::types type;
  const char* value;  // as text
};

TEST(CallWords, AcceptsEachFormOfAnArgument) {
  for (const Accepted& row : {
           Accepted{"setTimeHours=8", "setTimeHours", Parameter::integer, "8"},
           {"n=-2147483648", "n", Parameter::integer, "-2147483648"},
           {"n=2147483647", "n", Parameter::integer, "2147483647"},
           {"n=007", "n", Parameter::integer, "7"},
           {"n=2147483648", "n", Parameter::text, "2147483648"},
           {"n=-2147483649", "n", Parameter::text, "-2147483649"},
           {"n=+5", "n", Parameter::text, "+5"},
           {"n=5 ", "n", Parameter::text, "5 "},
           {"n=5.5", "n", Parameter::text, "5.5"},
           {"n=", "n", Parameter::text, ""},
           {"n=a=b", "n", Parameter::text, "a=b"},
           {"n=a:int", "n", Parameter::text, "a:int"},
           {"n:string=8", "n", Parameter::text, "8"},
           {"n:string=", "n", Parameter::text, ""},
           {"n:int=8", "n", Parameter::integer, "8"},
           {"n=true", "n", Parameter::text, "true"},
       }) {
    const Parameter parameter = parseArgument(row.word);
    EXPECT_EQ(parameter.getName(), row.name) << row.word;
    EXPECT_EQ(parameter.getType(), row.type) << row.word;
    EXPECT_EQ(valueText(parameter), row.value) << row.word;
    EXPECT_EQ(parameter.getDirection(), Parameter::in) << row.word;
  }
}

TEST(CallWords, RejectsWhatIsNotAnArgument) {
  for (const char* const word : {"", "8", "name", "=8", ":int=8", "n:int=", "n:int=x", "n:int=5 ",
                                 "n:int=2147483648", "n:float=5", "n:=5", "n:bool=true"}) {
    EXPECT_THROW(static_cast<void>(parseArgument(word)), UsageError) << word;
  }
}

TEST(CallWords, KeepsTheOrderOfArguments) {
  const std::vector<std::string> words = {"b=1", "a=x", "b=2"};
  const Method call = callOf("anything", words);
  EXPECT_EQ(call.getName(), "anything");
  EXPECT_EQ(call.getType(), Method::call);
  EXPECT_EQ(parametersText(call), "b=1 a=x b=2");
}

TEST(CallWords, PrintsBooleansAsWords) {
  Method reply("setTime", Method::reply);
  reply.addBoolParameter("yes", true, Parameter::out);
  reply.addBoolParameter("no", false, Parameter::out);
  EXPECT_EQ(parametersText(reply), "yes=true no=false");
}

}  // namespace
}  // namespace host
