#include "apps/HostWait.h"

#include <algorithm>
#include <string>
#include <thread>

#include "apps/Explanation.h"
#include "apps/TimeLimit.h"
#include "remote/RemoteClient.h"
#include "verbs/TimeText.h"

namespace host {
namespace {

using std::chrono::milliseconds;

// Between attempts: twice as long each time. No file event tells when a host listens at a socket
// that exists.
constexpr milliseconds kFirstPause{5};
constexpr milliseconds kLongestPause{100};

bool answers(RemoteClient& client, bool control, milliseconds limit) {
  if (control) return client.control(R"({"verb":"clock","action":"show"})", limit).has_value();
  Method method("getTime", Method::call);
  return client.call(method, limit).has_value();
}

// Empty: it answers. Otherwise why not: a host accepts connections before it answers.
std::string tryHost(const std::filesystem::path& socket, bool control, milliseconds limit) try {
  RemoteClient client(socket);
  if (answers(client, control, limit)) return "";
  std::string stopped = whyStopped(client);
  return stopped.empty() ? "the host at " + socket.string() + " is busy" : stopped;
} catch (const NoHost& error) {
  return error.what();
} catch (const HostGone& error) {
  return error.what();
}

}  // namespace

void waitForHost(const std::filesystem::path& socket, bool control, milliseconds limit) {
  const TimeLimit whole(limit);
  for (milliseconds pause = kFirstPause;; pause = std::min(2 * pause, kLongestPause)) {
    const std::string reason = tryHost(socket, control, whole.left());
    if (reason.empty()) return;
    if (whole.over()) {
      throw NoHost("no host answered within " + secondsText(limit) + "; " + reason);
    }
    std::this_thread::sleep_for(std::min(pause, whole.left()));
  }
}

}  // namespace host
