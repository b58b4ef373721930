#include "simulation/Run.h"

#include <exception>
#include <utility>

#include "simulation/Reference.h"
#include "simulation/StepMaker.h"
#include "simulation/SteppedTelephone.h"

namespace simulation {
namespace {

// FNV-1a, 64 bits.
void addTo(std::uint64_t& digest, const Lines& lines) {
  for (const std::string& line : lines) {
    for (const char c : line + "\n")
      digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  }
}

// A telephone and its reference.
class Pair {
 public:
  // True when both agree.
  bool take(const Step& step) {
    m_reference.apply(step);
    return agree(m_reference.take(), linesOf([&] {
                   m_telephone.apply(step);
                   return m_telephone.take();
                 })) &&
           agree(m_reference.snapshot(), linesOf([this] { return m_telephone.snapshot(); }));
  }
  [[nodiscard]] const Reference& reference() const { return m_reference; }
  [[nodiscard]] std::uint64_t digest() const { return m_digest; }
  [[nodiscard]] Difference difference(std::size_t step) const {
    return {step, m_expected, m_actual};
  }

 private:
  template <class Action>
  Lines linesOf(Action action) {
    std::string thrown;
    try {
      return action();
    } catch (const std::exception& error) {
      thrown = error.what();
    } catch (...) {
      thrown = "not a std::exception";
    }
    Lines lines = m_telephone.take();
    lines.push_back("threw: " + thrown);
    return lines;
  }
  bool agree(Lines expected, Lines actual) {
    addTo(m_digest, actual);
    m_expected = std::move(expected);
    m_actual = std::move(actual);
    return m_expected == m_actual;
  }

  SteppedTelephone m_telephone;
  Reference m_reference;
  std::uint64_t m_digest = 0xCBF29CE484222325U;
  Lines m_expected;
  Lines m_actual;
};

// Takes steps from `nextStep` until it returns none or there is a difference. Starts a telephone
// with all services first.
template <class NextStep>
Run runWith(NextStep nextStep, const Watch& watch) {
  Pair pair;
  Run run;
  if (!pair.take({Act::restart, {0, 0, 0, 0}, {""}})) run.difference = pair.difference(0);
  while (!run.difference) {
    const std::optional<Step> step = nextStep(pair.reference());
    if (!step) break;
    run.steps.push_back(*step);
    if (watch) watch(run);
    if (!pair.take(*step)) run.difference = pair.difference(run.steps.size());
  }
  run.digest = pair.digest();
  return run;
}

}  // namespace

Run run(const Steps& steps, const Watch& watch) {
  std::size_t at = 0;
  const auto next = [&](const Reference&) {
    return at < steps.size() ? std::optional(steps[at++]) : std::nullopt;
  };
  return runWith(next, watch);
}

Run run(std::uint64_t seed, std::size_t steps, const Watch& watch) {
  StepMaker maker(seed);
  std::size_t made = 0;
  const auto next = [&](const Reference& reference) {
    return made++ < steps ? std::optional(maker.next(reference)) : std::nullopt;
  };
  return runWith(next, watch);
}

}  // namespace simulation
