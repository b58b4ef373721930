#include "apps/Watching.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "base/Descriptor.h"
#include "remote/RemoteClient.h"
#include "remote/SocketFile.h"
#include "scenario/ScenarioWords.h"
#include "support/ErrorOf.h"
#include "support/TemporaryFolder.h"
#include "verbs/Verb.h"

namespace host {
namespace {

// A client of a host that the test plays.
class Watching : public ::testing::Test {
 protected:
  Watching() : m_listener(m_folder / "socket"), m_client(m_folder / "socket") {
    m_host.reset(::accept4(m_listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
  }

  // "timeChangeEventHours"
  void sendTime(int hours) {
    Method event("timeChangeEvent", Method::call);
    event.addIntParameter("timeChangeEventHours", hours, Parameter::in);
    send(event);
  }
  void send(Method event) {
    std::stringstream stream;
    MessagePackCodec().encode(event, stream);
    const std::string bytes = encodeFrame({FrameKind::event, 0, stream.view()});
    EXPECT_EQ(::send(m_host.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  // The events that this line prints, as "NAME PARAMETERS".
  std::vector<std::string> watch(const std::string& line, std::size_t readers = 100) {
    const auto words = splitScenarioLine(line);
    std::vector<std::string> printed;
    watchEvents(requestOf(verbOf(words), words), m_client, [&](const Json& event) {
      printed.push_back(event["event"].get<std::string>() + ' ' + event["parameters"].dump());
      return printed.size() < readers;
    });
    return printed;
  }

  support::TemporaryFolder m_folder;
  SocketFile m_listener;
  RemoteClient m_client;
  Descriptor m_host;
};

using Lines = std::vector<std::string>;

TEST_F(Watching, PassesWhatHasTheNameAndAllValues) {
  for (const int hours : {1, 3, 2}) sendTime(hours);
  send(Method("dateChangeEvent", Method::call));
  sendTime(3);
  EXPECT_EQ(watch("wait timeChangeEvent --where timeChangeEventHours=3"),
            Lines{R"(timeChangeEvent {"timeChangeEventHours":3})"});
  EXPECT_EQ(watch("wait dateChangeEvent alarmClockEvent"), Lines{"dateChangeEvent {}"});
  sendTime(4);
  EXPECT_EQ(watch("watch --count 2").size(), 2U);
}

TEST_F(Watching, SaysHowManyOfTheWantedEventsCame) {
  sendTime(1);
  send(Method("dateChangeEvent", Method::call));
  sendTime(2);
  EXPECT_EQ(
      errorOf([this] { static_cast<void>(watch("watch timeChangeEvent --count 5 --for 1s")); }),
      "2 of 5 events came within 1 s");
}

TEST_F(Watching, EndsWithItsReaderHoweverManyAreWanted) {
  sendTime(1);
  sendTime(2);
  EXPECT_EQ(watch("watch --count 2", 1).size(), 1U);
}

}  // namespace
}  // namespace host
