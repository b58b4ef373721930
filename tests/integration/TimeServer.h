#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "integration/Programs.h"

namespace integration {

// A real NTP server, chronyd, on a loopback port. It serves the machine's time and sets no clock.
// Owner: a test. Failure: std::runtime_error when it does not answer.
class TimeServer {
 public:
  // Where ./dev unpacks it.
  static bool isThere() { return std::filesystem::exists(CLOCK_CHRONYD); }

  // folder: for its files.
  explicit TimeServer(const std::filesystem::path& folder);

  [[nodiscard]] const std::string& port() const { return m_port; }

 private:
  [[nodiscard]] bool answers() const;

  const std::string m_port;
  std::unique_ptr<Program> m_program;
};

}  // namespace integration
