#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "HostProgram.h"
#include "Line.h"

namespace bench {

// Connections to one program, of which the first has it do something and the rest are told of it.
// Owner: a measurement.
class Subscribers {
 public:
  explicit Subscribers(const HostProgram& host)
      : m_socket(host.socket()), m_control(host.controlSocket()) {}
  explicit Subscribers(const FloorProgram& floor)
      : m_socket(floor.socket()), m_control(floor.socket()) {}

  // Until there are as many; those that are there stay.
  void connect(std::size_t count);
  // Those that do not yet subscribe to the clock of a host.
  void subscribe();

  [[nodiscard]] const Line& control() const { return m_control; }
  [[nodiscard]] const std::vector<Line>& lines() const { return m_lines; }

  // The bytes that let an hour pass at a host.
  [[nodiscard]] static std::string hourPasses();
  // Waits until all have the time event of a full hour, and returns its bytes.
  [[nodiscard]] std::string takeTimeEvent() const;

 private:
  const std::filesystem::path m_socket;
  const Line m_control;
  std::vector<Line> m_lines;
  std::size_t m_subscribed = 0;  // of them, from the first on
};

}  // namespace bench
