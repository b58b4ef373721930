// What clockctl makes of answers that no host gives: a program of another kind, or of another
// version, listens at the socket.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <sstream>
#include <string_view>
#include <thread>

#include "control/ClockCtl.h"
#include "control/ScenarioWords.h"
#include "remote/Frame.h"
#include "remote/SocketFile.h"
#include "support/TemporaryFolder.h"

namespace host {
namespace {

constexpr int kLongestWait = 30'000;  // milliseconds

// Listens where clockctl asks, and answers each request of one client with the same text.
class OddHost {
 public:
  OddHost(FrameKind kind, std::string answer)
      : m_kind(kind), m_answer(std::move(answer)), m_listener(m_folder / "socket.control") {}

  std::filesystem::path socket() const { return m_folder / "socket"; }

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
    if (request.kind != FrameKind::controlRequest) return;
    const std::string bytes = encodeFrame({m_kind, request.id, m_answer});
    static_cast<void>(::send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL));
  }

  const FrameKind m_kind;
  const std::string m_answer;
  support::TemporaryFolder m_folder;
  SocketFile m_listener;
};

// What clockctl says on standard error; its status is 1.
std::string refusalOf(const std::string& line, const std::string& answer,
                      FrameKind kind = FrameKind::controlReply) {
  OddHost odd(kind, answer);
  std::thread serving([&] { odd.serve(); });
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(runClockCtl(splitScenarioLine(line), odd.socket(), out, err), 1) << answer;
  EXPECT_EQ(out.str(), "") << answer;
  serving.join();
  return err.str();
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

TEST(ClockCtlAnswers, OfAFollowedLogAreObjects) {
  for (const char* const item : {"5", "{", "{}\x01"})
    EXPECT_EQ(refusalOf("log --follow", item, FrameKind::controlItem),
              "clockctl: the host's answer is no JSON object\n");
}

}  // namespace
}  // namespace host
