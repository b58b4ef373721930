#include "simulation/Life.h"

#include <utility>

#include "simulation/LastWords.h"
#include "simulation/StepMaker.h"
#include "simulation/Thrown.h"
#include "simulation/model/ClockModel.h"
#include "simulation/world/World.h"

namespace simulation {
namespace {

// FNV-1a, 64 bits.
class Digest {
 public:
  void add(const Lines& lines) {
    for (const std::string& line : lines) {
      for (const char c : line) add(static_cast<unsigned char>(c));
      add('\n');
    }
  }
  [[nodiscard]] std::uint64_t value() const { return m_value; }

 private:
  void add(unsigned char byte) { m_value = (m_value ^ byte) * 0x100000001B3U; }
  std::uint64_t m_value = 0xCBF29CE484222325U;
};

// A telephone and its model, side by side.
class Pair {
 public:
  // True when both agree.
  bool take(const Step& step) {
    m_model.apply(step);
    return agree(m_model.take(), said([&] {
                   m_world.apply(step);
                   return m_world.take();
                 })) &&
           agree(m_model.snapshot(), said([this] { return m_world.snapshot(); }));
  }
  [[nodiscard]] const ClockModel& model() const { return m_model; }
  [[nodiscard]] std::uint64_t digest() const { return m_digest.value(); }
  [[nodiscard]] Difference difference(std::size_t step) const {
    return {step, m_expected, m_actual};
  }

 private:
  // What the telephone says; an exception is said as well, and the model knows none.
  template <class Doing>
  Lines said(Doing doing) {
    Lines lines;
    const auto thrown = thrownBy([&] { lines = doing(); });
    if (!thrown) return lines;
    lines = m_world.take();
    lines.push_back("threw: " + *thrown);
    return lines;
  }
  bool agree(Lines expected, Lines actual) {
    m_digest.add(actual);
    m_expected = std::move(expected);
    m_actual = std::move(actual);
    return m_expected == m_actual;
  }

  World m_world;
  ClockModel m_model;
  Digest m_digest;
  Lines m_expected;
  Lines m_actual;
};

// A plain telephone with everything in it.
Step firstStart() {
  return Step{Act::restart, {0, 0, 0, 0}, {}, {}};
}

// Lives what `nextStep` gives until it gives nothing, or the two go apart.
template <class NextStep>
Life liveWith(std::optional<std::uint64_t> seed, NextStep nextStep) {
  WatchedLife watched(seed);
  watched.begins(0, "the first start");
  Pair pair;
  Life life;
  if (!pair.take(firstStart())) life.difference = pair.difference(0);
  while (!life.difference) {
    const std::optional<Step> step = nextStep(pair.model());
    if (!step) break;
    life.steps.push_back(*step);
    watched.begins(life.steps.size(), describe(*step));
    if (!pair.take(*step)) life.difference = pair.difference(life.steps.size());
  }
  life.digest = pair.digest();
  return life;
}

}  // namespace

Life live(const Steps& steps) {
  std::size_t at = 0;
  return liveWith(std::nullopt, [&](const ClockModel&) {
    return at < steps.size() ? std::optional(steps[at++]) : std::nullopt;
  });
}

Life live(std::uint64_t seed, std::size_t steps) {
  StepMaker maker(seed);
  std::size_t made = 0;
  return liveWith(seed, [&](const ClockModel& model) {
    return made++ < steps ? std::optional(maker.next(model)) : std::nullopt;
  });
}

}  // namespace simulation
