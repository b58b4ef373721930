// Bytes in the pipe for time reports, in several openings one after the other: the listener takes
// the first four bytes of each as a time, passes it on unless it is 0, and continues to listen.

#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "SNTPTimeChangeObserver.h"
#include "fuzz/Property.h"
#include "support/ListenerPipe.h"

namespace {

using Times = std::vector<long>;

constexpr std::size_t kMostOpenings = 8;

class RecordingObserver final : public SNTPTimeChangeObserver {
 public:
  void handleSNTPClientUpdate(long secondsSinceEpoch) override {
    const std::lock_guard lock(m_mutex);
    m_times.push_back(secondsSinceEpoch);
  }
  [[nodiscard]] Times times() const {
    const std::lock_guard lock(m_mutex);
    return m_times;
  }

 private:
  mutable std::mutex m_mutex;  // guards the times
  Times m_times;
};

// Adds the time that one opening reports, unless it is 0.
void add(Times& times, std::string_view bytes) {
  std::uint32_t seconds = 0;
  std::memcpy(&seconds, bytes.data(), std::min(bytes.size(), sizeof seconds));
  if (seconds != 0) times.push_back(static_cast<long>(seconds));
}

// The times that the listener passes on. A listener that is stopped drops what it has just read, so
// this waits until the last opening is closed.
Times reported(const std::vector<std::string_view>& openings) {
  RecordingObserver observer;
  support::ListenerPipe pipe;
  {
    SNTPClientThread listener(&observer);
    listener.start();
    for (const std::string_view bytes : openings) pipe.write(std::string(bytes));
    support::ListenerPipe::awaitClosed();
    pipe.release();
  }
  return observer.times();
}

}  // namespace

// The input is a row of openings: a byte with the size, then so many bytes.
void fuzz::property(std::string_view input) {
  Reader reader(input);
  std::vector<std::string_view> openings;
  Times expected;
  while (openings.size() < kMostOpenings && !reader.atEnd()) {
    const std::size_t size = reader.byte();
    openings.push_back(reader.take(size));
    add(expected, openings.back());
  }
  hold(reported(openings) == expected, "each opening is one report of its first four bytes", input);
}
