#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "integration/RestartableHost.h"
#include "powercut/Load.h"

namespace powercut {

// Counts for the report.
struct Figures {
  std::uint64_t cuts = 0;
  std::uint64_t inStart = 0;  // before the host answered
  std::uint64_t cutOff = 0;   // sets without an answer that were kept
  std::uint64_t setsAcknowledged = 0;
  std::uint64_t timesAcknowledged = 0;
  std::uint64_t scripts = 0;  // checked
};

// Kills one telephone's host again and again, at random moments of its start and of a load, and
// checks after each start that everything acknowledged was kept.
// Owner: a test. Failure: the first broken promise is failure().
class PowerCuts {
 public:
  explicit PowerCuts(std::uint64_t seed);

  // True when everything was kept over this number of cuts.
  bool cut(std::uint64_t times);

  [[nodiscard]] const std::string& failure() const { return m_failure; }
  [[nodiscard]] const Figures& figures() const { return m_figures; }

 private:
  void cutInStart();
  void cutUnderLoad();
  void kill();
  void wait(int mostMicroseconds);
  bool start();
  void checkPromises();
  void checkScript();
  void checkSecurityLog();
  void checkFigures();
  void fail(const std::string& text);

  integration::RestartableHost m_host;
  Promises m_promises;
  Figures m_figures;
  std::mt19937_64 m_random;
  bool m_hasScript = false;
  std::string m_failure;
};

// The figures in one line.
[[nodiscard]] std::string toText(const Figures& figures);

}  // namespace powercut
