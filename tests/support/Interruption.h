#pragma once

#include <atomic>
#include <csignal>

namespace support {

// SIGINT and SIGTERM ask the program to come to its end in order, so that it leaves nothing behind.
// Each is asked once: the second ends it on the spot. Owner: main, from before any thread.
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

  // The signal that has come; 0 without one. Any thread.
  [[nodiscard]] static int signal() { return s_signal; }

  // A program's exit status: of the signal that has come, or else this one.
  [[nodiscard]] static int statusOr(int status) { return s_signal != 0 ? 128 + s_signal : status; }

 private:
  static void note(int number) { s_signal = number; }

  static inline std::atomic<int> s_signal{0};
};

}  // namespace support
