#pragma once

#include <cstddef>
#include <string>

#include "remote/OneLinePerPause.h"

namespace host {

class Peer;

// Counts the clients' registrations as observers, and refuses those beyond the limits
// (ClientLimits.h). Owner: the server. Thread: that of the calls. Failure: a refusal is logged
// (OneLinePerPause).
class Registrations {
 public:
  // observers: how many clients may register. further: how many registrations all of them may have
  // beyond the first of each.
  Registrations(std::size_t observers, std::size_t further)
      : m_mostObservers(observers), m_mostFurther(further) {}

  // Whether the call in progress may use the client's proxy; false for an "observeTimeEvents"
  // beyond the limits. Counts that call, and discounts an "unobserveTimeEvents".
  [[nodiscard]] bool mayUseProxy(Peer& peer);

  // The client has disconnected: its registrations no longer count.
  void forget(Peer& peer);

 private:
  void add(Peer& peer);
  void remove(Peer& peer);
  [[nodiscard]] std::string refusal(const Peer& peer) const;  // empty: allowed

  const std::size_t m_mostObservers;
  const std::size_t m_mostFurther;
  std::size_t m_observers = 0;
  std::size_t m_further = 0;
  OneLinePerPause m_refusals{"registration refused"};
};

}  // namespace host
