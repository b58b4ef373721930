#include "verbs/CatalogueAnswers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "verbs/MethodCatalogue.h"
#include "verbs/UsageError.h"
#include "verbs/VerbPrinters.h"

namespace host {
namespace {

std::string told(const Json& request) {
  const Json answer = catalogueAnswer(request);
  std::ostringstream out;
  request.at("verb") == "events" ? printEvents(answer, out) : printMethods(answer, out);
  return out.str();
}

TEST(CatalogueAnswers, TellAboutAMethod) {
  EXPECT_EQ(
      told({{"verb", "methods"}, {"name", "setTime"}}),
      "method       setTime\n"
      "meaning      sets the local time by hand\n"
      "request      setTimeHours int: 0-23, unchecked\n"
      "             setTimeMinutes int: 0-59, unchecked\n"
      "             setTimeSeconds int: 0-59, unchecked\n"
      "reply        setTimeReturn bool\n"
      "example      clockctl call setTime setTimeHours=7 setTimeMinutes=30 setTimeSeconds=0\n");
  EXPECT_TRUE(catalogueAnswer({{"verb", "methods"}, {"name", "setTimeInt"}}).at("reply").is_null());
}

TEST(CatalogueAnswers, TellAboutAnEvent) {
  EXPECT_EQ(told({{"verb", "events"}, {"name", "timeChangeEvent"}}),
            "event        timeChangeEvent\n"
            "when         full hour, time set, NTP report, zone change\n"
            "parameters   timeChangeEventHours int: 0-23\n"
            "             timeChangeEventMinutes int: 0-59\n"
            "             timeChangeEventSeconds int: 0-59\n"
            "example      timeChangeEvent timeChangeEventHours=3 timeChangeEventMinutes=0 "
            "timeChangeEventSeconds=0\n");
}

TEST(CatalogueAnswers, ListEachMethodAndEventOnALine) {
  const std::string methods = told({{"verb", "methods"}});
  EXPECT_TRUE(methods.starts_with("getTime                returns the displayed time\n"))
      << methods;
  EXPECT_EQ(std::count(methods.begin(), methods.end(), '\n'), 23);
  const std::string events = told({{"verb", "events"}});
  EXPECT_TRUE(events.starts_with("timezoneChangeEvent    zone change\n")) << events;
  EXPECT_EQ(std::count(events.begin(), events.end(), '\n'), 4);
}

TEST(CatalogueAnswers, RefuseUnknownNames) {
  EXPECT_THROW(static_cast<void>(catalogueAnswer({{"verb", "methods"}, {"name", ""}})), UsageError);
  EXPECT_THROW(static_cast<void>(catalogueAnswer({{"verb", "events"}, {"name", "getTime"}})),
               UsageError);
}

}  // namespace
}  // namespace host
