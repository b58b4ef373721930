#include "operator/ClockMoveQueue.h"

#include <exception>
#include <new>
#include <utility>

#include "Logging.h"
#include "base/LogLevels.h"
#include "base/Origin.h"
#include "clock/VirtualClock.h"
#include "framework/MemoryReserve.h"
#include "operator/HostActions.h"
#include "remote/ControlChannel.h"

namespace host {

using SteadyClock = std::chrono::steady_clock;

ClockMoveQueue::ClockMoveQueue(VirtualClock& clock, Later later, Arrived arrived)
    : m_clock(clock), m_later(std::move(later)), m_arrived(std::move(arrived)) {}

void ClockMoveQueue::add(ClockMove move, const Channel& channel) {
  channel->holdNext();
  m_waiting.push_back({std::move(move), channel});
  if (m_waiting.size() == 1) runSlice();
}

// Runs a slice of the first move, and queues the next slice on the loop.
void ClockMoveQueue::runSlice() try {
  const Channel channel = m_waiting.front().channel;  // owns the origin's text
  const OriginScope origin(channel->origin());
  if (!MemoryReserve::refill()) throw std::bad_alloc();
  if (isOver(m_waiting.front())) m_waiting.pop_front();
  if (m_waiting.empty()) return;
  m_later([this, alive = std::weak_ptr(m_alive)] {
    if (!alive.expired()) runSlice();
  });
} catch (const std::bad_alloc&) {
  giveUp("out of memory");
} catch (const std::exception& error) {
  giveUp(error.what());
}

// Refuses all waiting moves, which would otherwise wait forever for the next slice. An explicit
// answer would need memory. Destroying a channel without an answer refuses its request without
// memory.
void ClockMoveQueue::giveUp(const char* why) {
  logAppUni("clockhost", kLogError, __FILE__, __LINE__, "%zu %s given up: %s", m_waiting.size(),
            m_waiting.size() == 1 ? "move of the clock is" : "moves of the clock are", why);
  while (!m_waiting.empty()) {
    const Channel channel = m_waiting.front().channel;
    const OriginScope origin(channel->origin());
    m_waiting.pop_front();
  }
}

bool ClockMoveQueue::isOver(PendingMove& pending) {
  if (!pending.channel->wanted()) return true;
  try {
    if (!pending.target) pending.target = pending.move.begin();
    const auto end = SteadyClock::now() + kSlice;
    if (!m_clock.advanceTo(*pending.target, [&] { return goesOnNow(end); })) return false;
    m_arrived(pending.channel, pending.move.arrive());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    answerRefusal(pending.channel, error.what());
  }
  return true;
}

bool ClockMoveQueue::goesOnNow(SteadyClock::time_point end) const {
  return !m_later || SteadyClock::now() < end;
}

}  // namespace host
