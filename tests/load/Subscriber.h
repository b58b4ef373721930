#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "remote/FrameSocket.h"

namespace load {

// A client that observes, and reads events when the test asks. Owner: a test. Thread: one at a
// time. Failure: host::Error, when the host does not accept it or disconnects; std::runtime_error.
class Subscriber {
 public:
  // Connects and registers; each event comes as often as it is registered. REQUIRES: the clock
  // stands still, so that no event comes before the replies.
  explicit Subscriber(const std::filesystem::path& socket, int registrations = 1);

  // Reads these events, and throws when another one comes instead, or one is missing for 20 s.
  // Payloads in the default codec.
  void expect(const std::vector<std::string>& events);

  // Throws when an event is left to read.
  void expectNoMore();

  // Without reading: whether the host has disconnected.
  [[nodiscard]] bool isDisconnected() const;

  // Reads everything left after the host has disconnected; how many bytes that was.
  [[nodiscard]] std::size_t drain() const;

 private:
  host::FrameSocket m_socket;
  const int m_registrations;
};

}  // namespace load
