#include "apps/ClockCtl.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "Method.h"
#include "integration/OneLine.h"
#include "remote/Frame.h"
#include "remote/MessagePackCodec.h"
#include "remote/SocketFile.h"
#include "scenario/ScenarioWords.h"
#include "support/TemporaryFolder.h"
#include "verbs/Verb.h"

namespace host {
namespace {

using integration::expectOneLine;
using integration::Outcome;
using integration::Words;

Outcome run(const Words& words, const std::filesystem::path& socket) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = runClockCtl(words, socket, out, err);
  return {status, out.str(), err.str()};
}

Outcome run(const std::string& line, const std::filesystem::path& socket) {
  return run(splitScenarioLine(line), socket);
}

// Besides calls, any request may wait two seconds for a name server.
TEST(ClockCtl, WaitsLongerForRequestsThatTakeLonger) {
  const std::pair<const char*, int> rows[] = {
      {"call getTime", 2},      {"watch", 2},
      {"get time", 5},          {"set sntp-addr time.example.org", 5},
      {"inject dhcp 1", 5},     {"clock", 5},
      {"clock next", 5},        {"clock jump 2026-03-08T06:59:50Z", 5},
      {"clock advance 1d", 60}, {"clock to dst", 60},
  };
  for (const auto& [line, seconds] : rows) {
    const Words words = splitScenarioLine(line);
    const Verb& verb = verbOf(words);
    EXPECT_EQ(replyLimit(verb, requestOf(verb, words)), std::chrono::seconds(seconds)) << line;
  }
}

TEST(ClockCtl, WrongUsageIsStatusTwoWithOneShortLine) {
  const std::string length(100'000, 'x');
  const std::pair<Words, const char*> rows[] = {
      {{}, "a verb is missing"},
      {{"x\ny"}, "unknown verb \"x\\ny\"; `clockctl --help` lists the verbs"},
      {{"clock", "spe\ned"}, "\"spe\\ned\" is not show"},
      {{"--wro\nng"}, "unknown option \"--wro\\nng\"; `clockctl --help` lists the options"},
      {{"--jsno", "keys"}, "unknown option \"--jsno\"; did you mean \"--json\"?"},
      {{"version"}, "unknown verb \"version\"; `clockctl --help` lists the verbs"},
      {{"--timeout=", "keys"}, "--timeout: \"\" is not a number of seconds: more than 0"},
      {{"--timeout", "2 s", "keys"}, "--timeout: \"2 s\" is not a number of seconds"},
      {{"--socket"}, "--socket: its value is missing; write --socket FILE"},
      {{"--json=yes", "keys"}, "--json takes no value"},
      {{"--timeout", "1\n2", "keys"}, "1\\n2"},
      {{length}, "...\" (100000 bytes)"},
      {{"clock", "advance", length}, "...\" (100000 bytes) is not a duration; write `90s`"},
      {{"--" + length}, "; `clockctl --help` lists"},
      {{"--timeout=" + length, "status"}, "; `clockctl --help` lists"},
      {{"get", "\xff"}, "KEY must be UTF-8 text"},
      {{"\xff"}, "unknown verb \"\\xFF\"; `clockctl --help` lists the verbs"},
  };
  for (const auto& [words, part] : rows)
    expectOneLine(run(words, "/nowhere"), 2, {"clockctl: ", part});
}

TEST(ClockCtl, ErrorsAreJsonWhereAnswersAre) {
  const std::pair<Words, const char*> rows[] = {
      {{"--json", "get"}, R"j({"ok":false,"status":2,"error":"KEY is missing (usage: get KEY)"})j"},
      {{"stats", "--json"},
       R"({"ok":false,"status":2,"error":"unknown verb \"stats\"; did you mean \"status\"?"})"},
      {{"--json", "keys", "--socket", "/nowhere"},
       R"({"ok":false,"status":3,"error":"no host at /nowhere.control: )"
       R"(No such file or directory"})"},
  };
  for (const auto& [words, line] : rows) {
    EXPECT_EQ(run(words, "/nowhere").err, line + std::string("\n"));
  }
  expectOneLine(run({"--", "stats", "--json"}, "/nowhere"), 2, {"clockctl: unknown verb"});
}

TEST(ClockCtl, NoHostIsStatusThreeAndNamesTheSocket) {
  const support::TemporaryFolder folder;
  const std::string socket = folder / "socket";
  for (const auto& [line, named] : {std::pair<const char*, std::string>("get time", ".control"),
                                    {"clock", ".control"},
                                    {"call getTime", ""},
                                    {"watch", ""}}) {
    expectOneLine(run(line, socket), 3, {"clockctl: no host at " + socket + named + ": "});
  }
}

// Root may connect to any socket: during its lifetime, a test of root runs as user nobody.
class NotRoot {
 public:
  NotRoot() { EXPECT_EQ(m_user != 0 ? 0 : ::seteuid(kNobody), 0); }
  ~NotRoot() { EXPECT_EQ(::seteuid(m_user), 0); }
  NotRoot(const NotRoot&) = delete;
  NotRoot& operator=(const NotRoot&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  const uid_t m_user = ::geteuid();
};

class SocketsOfAnotherUser : public ::testing::Test {
 protected:
  SocketsOfAnotherUser() {
    EXPECT_EQ(::chmod(m_folder.path().c_str(), 0711), 0);
    EXPECT_EQ(::chmod(control().c_str(), 0), 0);
  }
  void allowCalls(bool allowed) { EXPECT_EQ(::chmod(calls().c_str(), allowed ? 0666 : 0), 0); }
  [[nodiscard]] std::string calls() const { return m_folder / "socket"; }
  [[nodiscard]] std::string control() const { return calls() + ".control"; }
  Outcome runAsAnother(const std::string& line) {
    const NotRoot notRoot;
    return run(line, calls());
  }

  support::TemporaryFolder m_folder;
  const SocketFile m_calls{calls()};
  const SocketFile m_control{control()};
};

TEST_F(SocketsOfAnotherUser, AreRefusedWithStatusOneAndWhatToDo) {
  const std::string alone =
      "clockctl: the host's control socket " + control() + " is for its owner only";
  for (const bool mayCall : {true, false}) {
    allowCalls(mayCall);
    const Outcome outcome = runAsAnother("keys");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, alone + (mayCall ? "; you may use call and watch\n" : "\n"));
  }
  for (const char* const line : {"call getTime", "watch"}) {
    const Outcome outcome = runAsAnother(line);
    EXPECT_EQ(outcome.status, 1) << line;
    EXPECT_EQ(outcome.err, "clockctl: no permission for the host's socket " + calls() +
                               "; its owner can open it with --socket-group\n");
  }
}

TEST(ClockCtl, HelpIsStatusZero) {
  const Outcome outcome = run("--help", "/nowhere");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

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
  Outcome outcome = run(line, odd.socket());
  serving.join();
  if (requests != nullptr) *requests = odd.requests();
  return outcome;
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
