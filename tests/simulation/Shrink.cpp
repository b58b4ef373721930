// From a life of thousands of steps to the few that matter.

#include <algorithm>

#include "simulation/Life.h"
#include "simulation/Report.h"

namespace simulation {
namespace {

using Clock = std::chrono::steady_clock;

Steps without(const Steps& steps, std::size_t from, std::size_t count) {
  Steps rest(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(from));
  const std::size_t after = std::min(from + count, steps.size());
  rest.insert(rest.end(), steps.begin() + static_cast<std::ptrdiff_t>(after), steps.end());
  return rest;
}

// Tries lives that leave something out, as long as there is time.
class Shrinker {
 public:
  Shrinker(Life life, const Liver& again, Clock::duration most)
      : m_life(std::move(life)),
        m_fault(faultOf(*m_life.difference)),
        m_again(again),
        m_end(Clock::now() + most) {}

  // Leaves out runs of `size` steps, from the end. True when there was one that could go.
  bool leaveOut(std::size_t size) {
    bool shorter = false;
    for (std::size_t end = m_life.steps.size(); end > 0 && !late();) {
      const std::size_t from = end > size ? end - size : 0;
      shorter = isTheSame(without(m_life.steps, from, end - from)) || shorter;
      end = std::min(from, m_life.steps.size());
    }
    return shorter;
  }
  [[nodiscard]] bool late() const { return Clock::now() >= m_end; }
  [[nodiscard]] const Life& life() const { return m_life; }

 private:
  // Another difference would be another fault: this one would not be shown any more.
  bool isTheSame(const Steps& steps) {
    Life tried = m_again(steps);
    const bool same = tried.difference && faultOf(*tried.difference) == m_fault;
    if (same) m_life = std::move(tried);
    return same;
  }

  Life m_life;
  const std::string m_fault;
  const Liver& m_again;
  const Clock::time_point m_end;
};

}  // namespace

Life shrunk(const Life& life, const Liver& again, Clock::duration most) {
  Shrinker shrinker(life, again, most);
  for (std::size_t size = std::max<std::size_t>(life.steps.size() / 2, 1);;) {
    const bool shorter = shrinker.leaveOut(size);
    if (shrinker.late() || (size == 1 && !shorter)) return shrinker.life();
    size = std::max<std::size_t>(size / 2, 1);
  }
}

}  // namespace simulation
