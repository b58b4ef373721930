// What survives a restart, and a report of the NTP client.
#include "acceptance/Acceptance.h"

namespace {

using conformance::becomesTrue;
using conformance::instantOf;
using conformance::setClock;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;

using RestartAcceptance = conformance::Acceptance;

TEST_F(RestartAcceptance, ANewDeviceStartsIn2016) {
  EXPECT_EQ(telephone().localDate(), "2016-06-16");
}

TEST_F(RestartAcceptance, TheTimeContinuesWhereItWasSaved) {
  telephone().call("setDate", {{"setDateDay", 29}, {"setDateMonth", 2}, {"setDateYear", 2028}});
  telephone().call("setTime",
                   {{"setTimeHours", 23}, {"setTimeMinutes", 59}, {"setTimeSeconds", 50}});
  pass(milliseconds{1});  // it is saved
  telephone().takeEvents();
  telephone().restart();
  EXPECT_EQ(telephone().localDate(), "2028-02-29");
  EXPECT_EQ(telephone().localTime().substr(0, 7), "23:59:5");
  pass(seconds{10});
  EXPECT_EQ(telephone().localDate(), "2028-03-01");
}

TEST_F(RestartAcceptance, TheTimeIsSavedEveryTwelveHours) {
  telephone();
  setClock(instantOf("2030-01-01T00:00:00"));
  pass(hours{12});
  telephone().restart();
  EXPECT_EQ(telephone().localDate() + " " + telephone().localTime().substr(0, 5),
            "2030-01-01 12:00");
}

TEST_F(RestartAcceptance, TheStartIsRecorded) {
  telephone().call("setDate", {{"setDateDay", 1}, {"setDateMonth", 3}, {"setDateYear", 2028}});
  pass(milliseconds{1});
  telephone().restart();
  const std::string date = platform().deviceValue("last-restart-date").value_or("none");
  EXPECT_EQ(date.substr(0, 10), "2028-03-01") << date;
}

TEST_F(RestartAcceptance, AnNtpReportIsAnnouncedAndSaved) {
  telephone().takeEvents();
  const auto reported = instantOf("2030-03-04T05:06:07");
  telephone().reportTime(static_cast<std::uint32_t>(reported));
  std::vector<std::string> events;
  EXPECT_TRUE(becomesTrue([&] {
    for (const std::string& event : telephone().takeEvents()) events.push_back(event);
    return events.size() >= 2;
  }));
  ASSERT_EQ(events.size(), 2U);
  EXPECT_EQ(events[0].substr(0, 70),
            "call timeChangeEvent timeChangeEventHours=5 timeChangeEventMinutes=6 t");
  EXPECT_EQ(events[1],
            "call dateChangeEvent dateChangeEventDay=4 dateChangeEventMonth=3 "
            "dateChangeEventYear=2030");
  bool fromTheServer = false;
  EXPECT_TRUE(telephone()
                  .call("isTimeSourceSntp")
                  .getBoolParameter("isTimeSourceSntpReturn", fromTheServer, Parameter::out));
  EXPECT_TRUE(fromTheServer);
  telephone().restart();
  EXPECT_EQ(telephone().localDate() + " " + telephone().localTime().substr(0, 5),
            "2030-03-04 05:06");
}

}  // namespace
