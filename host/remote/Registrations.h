#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "remote/RareLine.h"

namespace host {

class Peer;

// Marks the client's call that this thread is executing: the service requests the proxy within it.
class CallUnderWay {
 public:
  explicit CallUnderWay(std::string_view call);  // encoded by the client's codec
  ~CallUnderWay();
  CallUnderWay(const CallUnderWay&) = delete;
  CallUnderWay& operator=(const CallUnderWay&) = delete;
};

// Counts the clients' registrations as observers, and refuses those beyond the bounds
// (ClientBounds.h). Owner: the server. Thread: that of the calls. Failure: a refusal is logged
// (RareLine).
class Registrations {
 public:
  // observers: how many clients may register. further: how many registrations all of them may have
  // beyond the first of each.
  Registrations(std::size_t observers, std::size_t further)
      : m_mostObservers(observers), m_mostFurther(further) {}

  // Whether the current call may use the client's proxy; false for an "observeTimeEvents" beyond
  // the bounds. Counts that call, and discounts an "unobserveTimeEvents".
  [[nodiscard]] bool mayRegister(Peer& peer);

  // The client has disconnected: its registrations no longer count.
  void forget(Peer& peer);

 private:
  void add(Peer& peer);
  void takeOff(Peer& peer);
  [[nodiscard]] std::string refusal(const Peer& peer) const;  // empty: allowed

  const std::size_t m_mostObservers;
  const std::size_t m_mostFurther;
  std::size_t m_observers = 0;
  std::size_t m_further = 0;
  RareLine m_refusals{"registration refused"};
};

}  // namespace host
