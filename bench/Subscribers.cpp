#include "Subscribers.h"

namespace bench {
namespace {

bool isTimeEvent(const std::string& frame) {
  return frame.find("timeChangeEvent") != std::string::npos;
}

// Midnight's date comes behind its hour: it is passed over by whoever waits for the next hour.
std::string timeEventAt(const Line& line) {
  std::string bytes;
  while (!isTimeEvent(bytes)) bytes = line.takeFrame().bytes;
  return bytes;
}

}  // namespace

void Subscribers::connect(std::size_t count) {
  m_lines.reserve(count);
  while (m_lines.size() < count) m_lines.emplace_back(m_socket);
}

void Subscribers::subscribe() {
  for (; m_subscribed < m_lines.size(); ++m_subscribed) {
    const Line& line = m_lines[m_subscribed];
    line.send(callOf("observeTimeEvents"));
    static_cast<void>(line.takeFrame());
  }
}

std::string Subscribers::hourPasses() {
  return controlOf(R"({"verb":"clock","action":"advance","seconds":3600})");
}

std::string Subscribers::takeTimeEvent() const {
  std::string event;
  for (const Line& line : m_lines) event = timeEventAt(line);
  return event;
}

}  // namespace bench
