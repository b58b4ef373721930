#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "base/Mutex.h"
#include "remote/Frame.h"

class MessageCodec;

namespace host {

// A frame between the host and one of its clients.
struct TappedFrame {
  const std::string& peer;    // the client's address: "client-7"
  const std::string& origin;  // its process: "uid 1000, pid 4711"
  MessageCodec& codec;        // of its calls, replies and events
  bool fromClient;
  const Frame& frame;
};

// Shows listeners each frame: one from a client before the host handles it, one to a client before
// it is sent, because the client's next frame may follow at once. The frames that a listener sends
// are not shown. Without a listener, a frame costs one atomic read. Owner: the server. Thread: any.
// Failure: a listener that throws misses the frame; the other listeners get it.
class FrameTap {
 public:
  // False removes the listener. Called with the tap's lock held: it must not block, log, or call
  // the tap.
  using Listener = std::function<bool(const TappedFrame&)>;

  // Returns the number for remove(), after which the listener is not called. Idempotent.
  [[nodiscard]] std::uint64_t add(Listener listener);
  void remove(std::uint64_t number);

  [[nodiscard]] bool hasListeners() const { return m_size > 0; }
  void show(const TappedFrame& frame) noexcept;

 private:
  Mutex m_mutex;
  std::atomic<std::size_t> m_size = 0;
  std::uint64_t m_lastNumber CLOCK_GUARDED_BY(m_mutex) = 0;
  std::map<std::uint64_t, Listener> m_listeners CLOCK_GUARDED_BY(m_mutex);
};

}  // namespace host
