#pragma once

#include <cstdint>
#include <string_view>

namespace simulation {

// The NTP client's end of the pipe. Between two calls the service's listener waits for bytes of
// this end, so that nothing in the service moves by itself.
class Listener {
 public:
  Listener() = default;
  ~Listener() { hangUp(); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  // Lays a fresh pipe where the service will look for it.
  void lay();
  // Waits until the listener has opened the pipe.
  void meet();
  // Sends one value, and waits until the listener has dealt with it.
  void report(std::uint32_t seconds);
  // The same with the bytes of one opening, at most as many as a pipe holds.
  void send(std::string_view bytes);
  // Sends nothing more: the listener's read returns.
  void hangUp();

 private:
  int m_writer = -1;
};

}  // namespace simulation
