#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string_view>

#include "base/Descriptor.h"
#include "base/Error.h"
#include "remote/Frame.h"

namespace host {

// No host listens at the socket.
struct NoHost : Error {
  using Error::Error;
};

// This user may not use the socket, or a folder on the path to it.
struct NotAllowed : Error {
  using Error::Error;
};

// The host disconnected, or sent something that is not a frame.
struct HostGone : Error {
  using Error::Error;
};

// The client's end of a connection: sends and receives whole frames, with time limits.
// Owner: its creator. Thread: one at a time. Failure: NoHost or NotAllowed from the
// constructor, HostGone later.
class FrameSocket {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  explicit FrameSocket(const std::filesystem::path& socket);

  // Sends one frame; while the host does not read, waits up to ten seconds, then throws HostGone.
  void send(const Frame& frame);

  // Waits for the next frame; the payload is valid until the next call. False at the deadline.
  [[nodiscard]] bool receive(Frame& frame, Deadline deadline);

  // Shuts the sending side down; the host disconnects when it has handled all frames.
  void finishSending();

  [[nodiscard]] int descriptor() const { return m_descriptor.get(); }

 private:
  void fill();

  Descriptor m_descriptor;
  FrameReader m_reader;
};

}  // namespace host
