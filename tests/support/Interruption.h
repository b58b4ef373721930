#pragma once

#include <atomic>
#include <csignal>

namespace support {

// SIGINT and SIGTERM ask the program to stop and to clean up behind it. The second one kills it.
// Owner: main, created before any thread.
class Interruption {
 public:
  Interruption() {
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int number : {SIGINT, SIGTERM}) ::sigaction(number, &action, nullptr);
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // The signal that was received; 0 when there was none. Any thread.
  [[nodiscard]] static int signal() { return s_signal; }

  // The exit status for the signal that was received, or else this one.
  [[nodiscard]] static int statusOr(int status) { return s_signal != 0 ? 128 + s_signal : status; }

 private:
  static void note(int number) { s_signal = number; }

  static inline std::atomic<int> s_signal{0};
};

}  // namespace support
