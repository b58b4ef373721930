#pragma once

#include <chrono>
#include <deque>
#include <filesystem>
#include <string>
#include <vector>

#include "load/Subscriber.h"

namespace load {

// A subscriber that reads now and then, so that the host has to queue for it, and hears everything
// in order all the same. Owner: a test. Thread: one at a time.
class SlowSubscriber {
 public:
  explicit SlowSubscriber(const std::filesystem::path& socket);

  void announce(const std::vector<std::string>& events);

  // Reads until all that was announced is heard. What was heard instead; empty when all is well.
  [[nodiscard]] std::string hearAll(std::chrono::seconds limit);

 private:
  Subscriber m_subscriber;
  std::deque<std::string> m_expected;
};

}  // namespace load
