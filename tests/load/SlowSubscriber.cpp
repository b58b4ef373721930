#include "load/SlowSubscriber.h"

#include <poll.h>

#include "remote/ClientBounds.h"

namespace load {
namespace {

using Clock = std::chrono::steady_clock;

// So that what it has not read is more than the system takes.
constexpr int kSlowRegistrations = host::kMostRegistrations;
constexpr int kBetweenLooks = 1000;  // milliseconds

}  // namespace

SlowSubscriber::SlowSubscriber(const std::filesystem::path& socket)
    : m_subscriber(socket, kSlowRegistrations) {}

void SlowSubscriber::announce(const std::vector<std::string>& events) {
  for (const std::string& event : events) {
    m_expected.insert(m_expected.end(), kSlowRegistrations, event);
  }
}

std::string SlowSubscriber::hearAll(std::chrono::seconds limit) {
  const auto deadline = Clock::now() + limit;
  bool wrong = false;
  while (!m_expected.empty() && !wrong) {
    if (Clock::now() > deadline) return "the slow subscriber has not heard all";
    pollfd waiting{m_subscriber.descriptor(), POLLIN, 0};
    ::poll(&waiting, 1, kBetweenLooks);
    m_subscriber.read([&](std::string_view event) {
      wrong = wrong || m_expected.empty() || m_expected.front() != event;
      if (!wrong) m_expected.pop_front();
    });
  }
  return wrong ? "the slow subscriber heard another event than the next" : "";
}

}  // namespace load
