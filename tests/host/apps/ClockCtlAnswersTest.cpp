// What clockctl makes of answers that no host gives: a program of another kind, or of another
// version, listens at the socket.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Method.h"
#include "apps/ClockCtl.h"
#include "remote/Frame.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketFile.h"
#include "scenario/ScenarioWords.h"
#include "support/TemporaryFolder.h"
#include "verbs/JsonText.h"

namespace host {
namespace {

constexpr int kLongestWait = 30'000;  // milliseconds

// Listens where clockctl asks, and answers the requests of one client with these texts, one after
// the other; the last one also answers each further request.
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

struct Ended {
  int status = 0;
  std::string out;
  std::string err;
  std::vector<std::string> requests;
};

Ended endOf(const std::string& line, std::vector<std::string> answers,
            FrameKind kind = FrameKind::controlReply) {
  OddHost odd(kind, std::move(answers));
  std::thread serving([&] { odd.serve(); });
  std::ostringstream out;
  std::ostringstream err;
  const int status = runClockCtl(splitScenarioLine(line), odd.socket(), out, err);
  serving.join();
  return {status, out.str(), err.str(), odd.requests()};
}

// What clockctl says on standard error; its status is 1.
std::string refusalOf(const std::string& line, const std::string& answer,
                      FrameKind kind = FrameKind::controlReply) {
  const Ended end = endOf(line, {answer}, kind);
  EXPECT_EQ(end.status, 1) << answer;
  EXPECT_EQ(end.out, "") << answer;
  return end.err;
}

// A page of a list: record `number`, with more records after it.
std::string page(int number) {
  const std::string text = std::to_string(number);
  return R"({"ok":true,"records":[)" + text + R"(],"after":)" + text + "}";
}

TEST(ClockCtlAnswers, OfAnotherShapeAreRefusedInOneLine) {
  const std::string refusal =
      "clockctl: the host's answer makes no sense; use the clockctl of the host's version\n";
  for (const char* const answer :
       {R"({"ok":1})", R"({"ok":false,"error":[]})", R"({"ok":true,"records":7,"after":1})"})
    EXPECT_EQ(refusalOf("security-log", answer), refusal) << answer;
}

TEST(ClockCtlAnswers, ThatNeverEndAreGivenUp) {
  for (const char* const line : {"security-log", "get time"})
    EXPECT_EQ(refusalOf(line, R"({"ok":true,"records":[],"after":1})"),
              "clockctl: the host's answer has no end\n");
}

TEST(ClockCtlAnswers, ThatGoBackAreGivenUp) {
  const Ended end = endOf("--json security-log", {page(2), page(1), R"({"ok":true,"records":[]})"});
  EXPECT_EQ(end.status, 1);
  EXPECT_EQ(end.err, "clockctl: the host's answer has no end\n");
}

TEST(ClockCtlAnswers, MayHaveAnyNumberOfPagesEachAskedForAfterTheOneBefore) {
  std::vector<std::string> answers;
  std::string all;
  for (int number = 1; number <= 1000; ++number) {
    answers.push_back(page(number));
    all += std::to_string(number) + ',';
  }
  answers.emplace_back(R"({"ok":true,"records":[0]})");
  const Ended end = endOf("--json security-log", answers);
  EXPECT_EQ(end.status, 0) << end.err;
  EXPECT_EQ(end.out, R"({"ok":true,"records":[)" + all + "0]}\n");
  for (std::size_t number = 0; number <= 1000; ++number)
    ASSERT_EQ(Json::parse(end.requests.at(number)).value("after", std::size_t{0}), number);
}

TEST(ClockCtlAnswers, OfAFollowedLogAreObjects) {
  for (const char* const item : {"5", "{", "{}\x01"})
    EXPECT_EQ(refusalOf("log --follow", item, FrameKind::controlItem),
              "clockctl: the host's answer is no JSON object\n");
}

TEST(ClockCtlAnswers, ThatTakeNoObserverEndTheWatch) {
  Method taken("observeTimeEvents", Method::reply);
  taken.addBoolParameter("observeTimeEventsReturn", false, Parameter::out);
  std::stringstream text;
  MessagePackCodec().encode(taken, text);
  EXPECT_EQ(refusalOf("watch", text.str(), FrameKind::reply),
            "clockctl: the service takes no observer\n");
}

}  // namespace
}  // namespace host
