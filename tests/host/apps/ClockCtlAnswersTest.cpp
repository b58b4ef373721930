#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "Method.h"
#include "apps/ClockCtl.h"
#include "integration/OneLine.h"
#include "remote/Frame.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketFile.h"
#include "scenario/ScenarioWords.h"
#include "support/FileContent.h"
#include "support/TemporaryFolder.h"
#include "verbs/Json.h"

namespace host {
namespace {

using integration::Outcome;
using integration::Words;

constexpr int kLongestWait = 30'000;  // milliseconds

// A program of another kind or version at the host's socket. It answers the requests of one client
// with these texts in order, and further requests with the last one.
class OddHost {
 public:
  OddHost(FrameKind kind, std::vector<std::string> answers)
      : m_kind(kind),
        m_asked(kind == FrameKind::reply ? FrameKind::call : FrameKind::controlRequest),
        m_answers(std::move(answers)),
        m_listener(m_folder / (kind == FrameKind::reply ? "socket" : "socket.control")) {}

  std::filesystem::path socket() const { return m_folder / "socket"; }
  const std::vector<std::string>& requests() const { return m_requests; }

  void serve() {
    pollfd coming{m_listener.descriptor(), POLLIN, 0};
    ::poll(&coming, 1, kLongestWait);
    const Descriptor client(::accept4(m_listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
    FrameReader reader;
    for (;;) {
      Frame frame;
      while (reader.next(frame) == FrameReader::Outcome::frame) answer(client.get(), frame);
      const auto space = reader.space();
      const ssize_t got = ::recv(client.get(), space.data(), space.size(), 0);
      if (got <= 0) return;
      reader.commit(static_cast<std::size_t>(got));
    }
  }

 private:
  void answer(int client, const Frame& request) {
    if (request.kind != m_asked) return;
    const std::string& text = m_answers[std::min(m_requests.size(), m_answers.size() - 1)];
    m_requests.emplace_back(request.payload);
    const std::string bytes = encodeFrame({m_kind, request.id, text});
    static_cast<void>(::send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL));
  }

  const FrameKind m_kind;
  const FrameKind m_asked;
  const std::vector<std::string> m_answers;
  std::vector<std::string> m_requests;
  support::TemporaryFolder m_folder;
  SocketFile m_listener;
};

// What clockctl prints for a host that gives these answers.
Outcome runBesideOddHost(const std::string& line, std::vector<std::string> answers,
                         FrameKind kind = FrameKind::controlReply,
                         std::vector<std::string>* requests = nullptr) {
  OddHost odd(kind, std::move(answers));
  std::thread serving([&] { odd.serve(); });
  std::ostringstream out;
  std::ostringstream err;
  const int status = runClockCtl(splitScenarioLine(line), odd.socket(), out, err);
  serving.join();
  if (requests != nullptr) *requests = odd.requests();
  return {status, out.str(), err.str()};
}

// The error of a command that is refused; its status is 1.
std::string refusalOf(const std::string& line, const std::string& answer,
                      FrameKind kind = FrameKind::controlReply) {
  const Outcome outcome = runBesideOddHost(line, {answer}, kind);
  EXPECT_EQ(outcome.status, 1) << answer;
  EXPECT_EQ(outcome.out, "") << answer;
  return outcome.err;
}

// A page of a list: record `number`, with more records after it.
std::string page(int number) {
  const std::string text = std::to_string(number);
  return R"({"ok":true,"records":[)" + text + R"(],"after":)" + text + "}";
}

TEST(ClockCtlAnswers, OfAnotherShapeAreRefused) {
  const std::string refusal =
      "clockctl: the host's answer is not understood; use the clockctl of the host's version\n";
  for (const char* const answer :
       {R"({"ok":1})", R"({"ok":false,"error":[]})", R"({"ok":true,"records":7,"after":1})"})
    EXPECT_EQ(refusalOf("security-log", answer), refusal) << answer;
}

TEST(ClockCtlAnswers, WithoutALastPageAreRefused) {
  const std::string empty = R"({"ok":true,"records":[],"after":1})";
  for (const auto& [line, first, second] : {std::tuple{"security-log", empty, empty},
                                            {"get time", empty, empty},
                                            {"--json security-log", page(2), page(1)}}) {
    const Outcome outcome = runBesideOddHost(line, {first, second, R"({"ok":true,"records":[]})"});
    EXPECT_EQ(outcome.status, 1) << line;
    EXPECT_NE(outcome.err.find("the host's pages do not advance"), std::string::npos);
  }
}

// The clock may run. An hour more or less is another time.
TEST(ClockCtlAnswers, TellWhenTheTimeIsNotTheOneMeant) {
  for (const auto& [now, told] : {std::pair{"06:59:50", false},
                                  {"06:59:51", false},
                                  {"06:59:49", true},
                                  {"07:59:50", true},
                                  {"05:59:50", true}}) {
    const std::string value = "2026-03-08T" + std::string(now) + "+00:00";
    const Outcome set = runBesideOddHost("set time local 2026-03-08 01:59:50",
                                         {R"({"ok":true,"instant":"2026-03-08T06:59:50+00:00"})",
                                          R"({"ok":true,"value":")" + value + R"("})"});
    EXPECT_EQ(set.err, told ? "note: time is now \"" + value + "\"\n" : "") << now;
  }
}

TEST(ClockCtlAnswers, MayHaveAnyNumberOfPages) {
  std::vector<std::string> answers;
  std::string all;
  for (int number = 1; number <= 1000; ++number) {
    answers.push_back(page(number));
    all += std::to_string(number) + ',';
  }
  answers.emplace_back(R"({"ok":true,"records":[0]})");
  Words requests;
  const Outcome end =
      runBesideOddHost("--json security-log", answers, FrameKind::controlReply, &requests);
  EXPECT_EQ(end.status, 0) << end.err;
  EXPECT_EQ(end.out, R"({"ok":true,"records":[)" + all + "0]}\n");
  for (std::size_t number = 0; number <= 1000; ++number)
    ASSERT_EQ(Json::parse(requests.at(number)).value("after", std::size_t{0}), number);
}

TEST(ClockCtlAnswers, WithOffsetsBecomeADrawing) {
  const support::TemporaryFolder folder;
  const std::string answer = R"({"ok":true,"upcoming":[],"offsets":[{"seconds":0,"offset":0}]})";
  Words requests;
  const std::string file = folder / "year.svg";
  EXPECT_EQ(
      runBesideOddHost("upcoming --plot " + file, {answer}, FrameKind::controlReply, &requests)
          .status,
      0);
  EXPECT_EQ(requests, Words{R"({"verb":"upcoming","plot":true})"});
  EXPECT_TRUE(support::contentOf(file).starts_with("<svg "));
  EXPECT_EQ(refusalOf("upcoming --plot " + folder.path().string(), answer),
            "clockctl: the plot \"" + folder.path().string() +
                "\" cannot be written; name a file in a "
                "folder that you may write to\n");
}

TEST(ClockCtlAnswers, ThatAreCutSayThatMoreCome) {
  const std::string cut = R"({"ok":true,"upcoming":[],"more":true})";
  const auto told = runBesideOddHost("upcoming --until 2030-01-01T00:00:00Z", {cut});
  EXPECT_EQ(told.status, 0);
  EXPECT_EQ(told.err, "note: more events come until then; only the first 1000 are listed\n");
  const auto json = runBesideOddHost("--json upcoming --until 2030-01-01T00:00:00Z", {cut});
  EXPECT_EQ(json.out, cut + '\n');
  EXPECT_EQ(json.err, "");
}

TEST(ClockCtlAnswers, ToAWatchedStatusEndWithTheirReader) {
  OddHost odd(FrameKind::controlReply, {R"({"ok":true,"version":"v"})"});
  std::thread serving([&] { odd.serve(); });
  std::ostream closed(nullptr);
  std::ostringstream err;
  EXPECT_EQ(runClockCtl(Words{"status", "--watch"}, odd.socket(), closed, err), 0) << err.str();
  serving.join();
  EXPECT_EQ(odd.requests(), Words{R"({"verb":"status"})"});
}

TEST(ClockCtlAnswers, ToAFollowedLogMustBeObjects) {
  for (const char* const item : {"5", "{", "{}\x01"}) {
    EXPECT_EQ(refusalOf("log --follow", item, FrameKind::controlItem),
              "clockctl: the host's answer is not a JSON object\n");
  }
}

TEST(ClockCtlAnswers, ThatRefuseTheObserverEndTheWatch) {
  Method taken("observeTimeEvents", Method::reply);
  taken.addBoolParameter("observeTimeEventsReturn", false, Parameter::out);
  std::stringstream text;
  MessagePackCodec().encode(taken, text);
  EXPECT_EQ(refusalOf("watch", text.str(), FrameKind::reply),
            "clockctl: the service refused the observer\n");
}

}  // namespace
}  // namespace host
