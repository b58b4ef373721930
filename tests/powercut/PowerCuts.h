#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "integration/RestartableHost.h"
#include "powercut/Load.h"

namespace powercut {

// What was met.
struct Figures {
  std::uint64_t cuts = 0;
  std::uint64_t inStart = 0;  // before the host answered
  std::uint64_t cutOff = 0;   // sets without an answer that a restart showed to be kept
  std::uint64_t setsAcknowledged = 0;
  std::uint64_t timesAcknowledged = 0;
  std::uint64_t scripts = 0;  // looked at
};

// One telephone whose power is cut again and again, at random moments of its start and of a load.
// Owner: a test. Failure: the first thing that was promised and not kept is complaint().
class PowerCuts {
 public:
  explicit PowerCuts(std::uint64_t seed);

  // True when all was kept over so many cuts.
  bool cut(std::uint64_t times);

  [[nodiscard]] const std::string& complaint() const { return m_complaint; }
  [[nodiscard]] const Figures& figures() const { return m_figures; }

 private:
  void cutInStart();
  void cutUnderLoad();
  void pull();
  void wait(int mostMicroseconds);
  bool start();
  void lookAtPromises();
  void lookAtScript();
  void lookAtSecurityLog();
  void lookAtFigures();
  void complain(const std::string& text);

  integration::RestartableHost m_host;
  Promises m_promises;
  Figures m_figures;
  std::mt19937_64 m_random;
  bool m_hasScript = false;
  std::string m_complaint;
};

// One line for people.
[[nodiscard]] std::string toText(const Figures& figures);

}  // namespace powercut
