// Bytes in the pipe of the time reports, in one opening after the other: the listener takes the
// first four of each as a time, passes it on unless it is 0, and goes on listening.

#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "SNTPTimeChangeObserver.h"
#include "fuzz/Property.h"
#include "plugin/ReportPipe.h"

namespace {

using Times = std::vector<long>;

constexpr std::size_t kMostOpenings = 8;

class Noting final : public SNTPTimeChangeObserver {
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
  mutable std::mutex m_mutex;  // guards what follows
  Times m_times;
};

// What one opening reports.
void add(Times& times, std::string_view bytes) {
  std::uint32_t seconds = 0;
  std::memcpy(&seconds, bytes.data(), std::min(bytes.size(), sizeof seconds));
  if (seconds != 0) times.push_back(static_cast<long>(seconds));
}

// What the listener passes on. A listener that ends drops what it has just read, so the last
// opening is waited for.
Times reported(const std::vector<std::string_view>& openings) {
  Noting observer;
  plugin::ReportPipe pipe;
  {
    SNTPClientThread listener(&observer);
    listener.start();
    for (const std::string_view bytes : openings) pipe.write(std::string(bytes));
    plugin::ReportPipe::awaitClosed();
    pipe.release();
  }
  return observer.times();
}

}  // namespace

// A byte says how many bytes the next opening has.
void fuzz::property(std::string_view input) {
  Reader reader(input);
  std::vector<std::string_view> openings;
  Times expected;
  while (openings.size() < kMostOpenings && !reader.atEnd()) {
    const std::size_t size = reader.byte();
    openings.push_back(reader.take(size));
    add(expected, openings.back());
  }
  hold(reported(openings) == expected, "each opening is one report, of its first bytes", input);
}
