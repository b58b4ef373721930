// An NTP server that is a name: what the model says, and that the telephone goes with it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "simulation/Addresses.h"
#include "simulation/Life.h"
#include "simulation/SimulationFolder.h"
#include "simulation/StepMaker.h"
#include "simulation/model/ClockModel.h"

namespace simulation {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const Step kStart{Act::restart, {0, 0, 0, 0}, {}, {}};
const Step kNetworkUp{Act::deviceValue, {}, {"interface-status", "up"}, {}};
const Step kLink{Act::jack, {5, 1}, {}, {}};
const Step kLookupsFail{Act::lookupsFail, {1}, {}, {}};
const Step kLookupsWork{Act::lookupsFail, {0}, {}, {}};

Step server(const std::string& text) {
  return {Act::set, {}, {"sntp-addr", text}, {}};
}

class SimulatedLookup : public testing::Test {
 protected:
  // What the last of the steps must bring; the telephone itself brings the same.
  Lines last(const Steps& steps) {
    EXPECT_FALSE(live(steps).difference);
    ClockModel model;
    model.apply(kStart);
    for (const Step& step : steps) {
      static_cast<void>(model.take());
      model.apply(step);
    }
    return model.take();
  }

 private:
  const SimulationFolder m_folder;
};

TEST_F(SimulatedLookup, ClientIsStartedWithTheAddressOfTheName) {
  EXPECT_THAT(last({kNetworkUp, server("ntp.example")}),
              AllOf(Contains("looks up ntp.example"), Contains("-> true"),
                    Contains(AllOf(StartsWith("starts "), HasSubstr("-h 198.51.100.255 -4 ")))));
  EXPECT_THAT(last({kNetworkUp, server("ntp6.example")}),
              Contains(AllOf(StartsWith("starts "), HasSubstr("-h 2001:db8::1 -6 "))));
}

TEST_F(SimulatedLookup, NameWithoutAnAddressIsAcceptedAndLeavesTheClientAlone) {
  const Lines lines = last({kNetworkUp, server("192.0.2.1"), server("gone.example")});
  EXPECT_THAT(lines, AllOf(Contains("-> true"), Contains("looks up gone.example")));
  EXPECT_THAT(lines, Not(Contains("client ends")));
  EXPECT_THAT(lines, Not(Contains(StartsWith("starts "))));
  EXPECT_THAT(lines, Not(Contains(StartsWith("log "))));
}

TEST_F(SimulatedLookup, NextStartAsksAgain) {
  const Steps failed{kNetworkUp, kLookupsFail, server("timeserver"), kLink};
  EXPECT_THAT(last(failed), testing::ElementsAre("looks up timeserver"));
  Steps working = failed;
  working.insert(working.end(), {kLookupsWork, kLink});
  EXPECT_THAT(last(working), Contains(AllOf(StartsWith("starts "), HasSubstr("-h 192.0.2.1 -4 "))));
}

TEST_F(SimulatedLookup, NobodyIsAskedWithoutANetwork) {
  EXPECT_THAT(last({server("ntp.example"), kLink}), testing::IsEmpty());
}

TEST_F(SimulatedLookup, NameHasTheAddressOfARow) {
  for (const Address& name : kAddresses) {
    if (name.resolved.empty()) continue;
    EXPECT_EQ(name.kind, AddressKind::name) << name.text;
    EXPECT_THAT(kindOf(name.resolved), testing::AnyOf(AddressKind::ipv4, AddressKind::ipv6));
  }
}

TEST_F(SimulatedLookup, LivesHaveNamesAndLookupsThatFail) {
  const Steps steps = live(46, 3000).steps;
  const auto has = [&steps](auto is) { return std::any_of(steps.begin(), steps.end(), is); };
  EXPECT_TRUE(has([](const Step& step) {
    return step.act == Act::set && step.texts[0] == "sntp-addr" &&
           kindOf(step.texts[1]) == AddressKind::name;
  }));
  EXPECT_TRUE(has([](const Step& s) { return s.act == Act::lookupsFail && s.numbers[0] == 1; }));
  EXPECT_TRUE(has([](const Step& s) { return s.act == Act::lookupsFail && s.numbers[0] == 0; }));
}

}  // namespace
}  // namespace simulation
