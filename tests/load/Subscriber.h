#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>

#include "base/Descriptor.h"
#include "remote/Frame.h"

namespace load {

// A client that observes, and then reads events or does not. Owner: a test. Thread: one at a time.
// Failure: std::runtime_error, when the host does not take it or hangs up.
class Subscriber {
 public:
  // Connects and registers so many times; each event comes as often.
  explicit Subscriber(const std::filesystem::path& socket, int registrations = 1);

  // Passes on the events that have come, without waiting.
  void read(const std::function<void(std::string_view event)>& heard);

  // Without reading: whether the host has hung up.
  [[nodiscard]] bool isHungUp() const;

  // Reads all that is left after the host has hung up; how many bytes that was.
  std::size_t drain();

  [[nodiscard]] int descriptor() const { return m_socket.get(); }

 private:
  void send(std::string_view bytes);
  bool receive();
  void awaitReplies(int count);

  host::Descriptor m_socket;
  host::FrameReader m_reader;
};

}  // namespace load
