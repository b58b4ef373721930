#pragma once

#include <cstdint>
#include <string>

#include "simulation/Chance.h"
#include "simulation/Step.h"

namespace simulation {

class ClockModel;

// Makes up a life, step by step. It looks at the model to find the moments that matter; the steps
// themselves are data.
class StepMaker {
 public:
  explicit StepMaker(std::uint64_t seed) : m_chance(seed) {}

  [[nodiscard]] Step next(const ClockModel& model);

 private:
  using Maker = Step (StepMaker::*)(const ClockModel&);
  struct Weighted {
    int weight;
    Maker make;
  };
  static const Weighted kMakers[];

  // StepMaker.cpp
  Step pass(const ClockModel&);
  Step nextTimer(const ClockModel&);
  Step jump(const ClockModel&);
  Step setByHand(const ClockModel&);
  Step setSeconds(const ClockModel&);
  Step report(const ClockModel&);
  Step jack(const ClockModel&);
  Step observer(const ClockModel&);
  Step trouble(const ClockModel&);
  Step service(const ClockModel&);
  Step restart(const ClockModel&);
  Step fallbackFile(const ClockModel&);
  Step oddity(const ClockModel&);
  std::int64_t momentMs(const ClockModel&);
  std::int64_t aroundMs(const ClockModel&);
  std::int64_t anySecond() { return m_chance.between(86400, 2147500000); }

  // ManagementSteps.cpp
  Step set(const ClockModel&);
  Step get(const ClockModel&);
  Step deviceValue(const ClockModel&);
  Step outsideStore(const ClockModel&);
  Step reset(const ClockModel&);
  std::string key();
  std::string valueFor(const std::string& key, const ClockModel&);
  std::string utc(const ClockModel&);
  std::string simpleTime();
  std::string simpleDate(const ClockModel&);
  std::string offset();

  // RemoteSteps.cpp
  Step call(const ClockModel&);
  Step remoteObserver(const ClockModel&);
  Step badCall(const ClockModel&);
  Argument number(const std::string& name, std::int64_t value);
  Argument text(const std::string& name, const std::string& value);
  void argumentsOf(Step& call, const ClockModel&);
  void setArguments(Step& call);

  Chance m_chance;
};

}  // namespace simulation
