#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "remote/RareLine.h"

namespace host {

class Peer;

// While it lives, this thread is in the client's call: the service asks for its proxy meanwhile.
class CallUnderWay {
 public:
  explicit CallUnderWay(std::string_view call);  // encoded by the client's codec
  ~CallUnderWay();
  CallUnderWay(const CallUnderWay&) = delete;
  CallUnderWay& operator=(const CallUnderWay&) = delete;
};

// Counts how often clients observe, and refuses what is beyond the bounds (ClientBounds.h).
// Owner: the server. Thread: that of the calls. Failure: a refusal has a log line (RareLine).
class Registrations {
 public:
  // observers: how many clients may observe. further: registrations of all of them together beyond
  // the first of each.
  Registrations(std::size_t observers, std::size_t further)
      : m_mostObservers(observers), m_mostFurther(further) {}

  // Whether the call that this thread is in may have the client's proxy: an "observeTimeEvents"
  // beyond the bounds may not. Counts it if so; an "unobserveTimeEvents" is taken off.
  [[nodiscard]] bool mayRegister(Peer& peer);

  // The client is gone: its registrations count no more.
  void forget(Peer& peer);

 private:
  void add(Peer& peer);
  void takeOff(Peer& peer);
  [[nodiscard]] std::string refusal(const Peer& peer) const;  // empty: none

  const std::size_t m_mostObservers;
  const std::size_t m_mostFurther;
  std::size_t m_observers = 0;
  std::size_t m_further = 0;
  RareLine m_refusals{"registration refused"};
};

}  // namespace host
