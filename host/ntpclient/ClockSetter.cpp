#include "ntpclient/ClockSetter.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "remote/FrameSocket.h"

namespace host::ntp {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr seconds kAnswerLimit{5};

std::pair<seconds, nanoseconds> split(nanoseconds sinceEpoch) {
  const auto whole = std::chrono::floor<seconds>(sinceEpoch);
  return {whole, sinceEpoch - whole};
}

class HostClock : public ClockSetter {
 public:
  explicit HostClock(std::filesystem::path socket) : m_socket(std::move(socket)) {}

  // A connection for each time: they are an hour apart, and the host may have been another
  // meanwhile.
  void set(nanoseconds sinceEpoch) override {
    const auto [whole, fraction] = split(sinceEpoch);
    const nlohmann::json request = {{"verb", "clock"},
                                    {"action", "set"},
                                    {"seconds", whole.count()},
                                    {"nanoseconds", fraction.count()}};
    FrameSocket socket(m_socket);
    socket.send({FrameKind::controlRequest, 1, request.dump()});
    Frame answer;
    const auto deadline = std::chrono::steady_clock::now() + kAnswerLimit;
    do {
      if (!socket.receive(answer, deadline)) throw Error("the host does not answer");
    } while (answer.kind != FrameKind::controlReply);
    check(nlohmann::json::parse(answer.payload, nullptr, false));
  }

 private:
  static void check(const nlohmann::json& answer) {
    if (!answer.is_object()) throw Error("the host's answer is not understood");
    const auto ok = answer.find("ok");
    if (ok != answer.end() && *ok == true) return;
    const auto error = answer.find("error");
    const bool told = error != answer.end() && error->is_string();
    throw Error("the host refused: " + (told ? error->get<std::string>() : answer.dump()));
  }

  const std::filesystem::path m_socket;
};

class SystemClock : public ClockSetter {
 public:
  void set(nanoseconds sinceEpoch) override {
    const auto [whole, fraction] = split(sinceEpoch);
    const timespec time{whole.count(), fraction.count()};
    if (::clock_settime(CLOCK_REALTIME, &time) != 0) {
      throw Error(std::string("the system clock cannot be set: ") + std::strerror(errno));
    }
  }
};

}  // namespace

std::unique_ptr<ClockSetter> makeHostClock(const std::filesystem::path& socket) {
  return std::make_unique<HostClock>(socket);
}

std::unique_ptr<ClockSetter> makeSystemClock() {
  return std::make_unique<SystemClock>();
}

}  // namespace host::ntp
