#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "integration/Programs.h"

namespace integration {

// A real NTP server of another make, chronyd, on a port of the loopback interface. It serves the
// machine's time and sets nothing. Owner: a test. Failure: std::runtime_error when it does not
// answer.
class TimeServer {
 public:
  // Why there is no server to be had here; empty when there is one.
  static std::string missing();

  // folder: for its files.
  explicit TimeServer(const std::filesystem::path& folder);

  [[nodiscard]] std::uint16_t port() const { return m_port; }

 private:
  void waitUntilItAnswers() const;

  const std::uint16_t m_port;
  std::unique_ptr<Program> m_program;
};

}  // namespace integration
