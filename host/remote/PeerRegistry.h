#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "base/Mutex.h"
#include "remote/OneLinePerPause.h"
#include "remote/ServiceCalls.h"

namespace host {

class Peer;
class Registrations;
class TurnQueue;

// The clients by address. A disconnected client stays until it is unobserved: its registrations are
// removed from the service in turns of the loop, however many clients disconnect together.
// Owner: the server. Thread: the loop's, except find(). Failure: a client that cannot be unobserved
// is logged (OneLinePerPause) and stays; retry() tries again.
class PeerRegistry {
 public:
  // Removes one registration of the peer from the service.
  using UnobserveOne = std::function<Unobserved(const std::string& address)>;

  // REQUIRES: turns and registrations outlive it.
  PeerRegistry(TurnQueue& turns, Registrations& registrations, UnobserveOne unobserveOne);
  ~PeerRegistry();  // frees all proxies
  PeerRegistry(const PeerRegistry&) = delete;
  PeerRegistry& operator=(const PeerRegistry&) = delete;

  void add(const std::shared_ptr<Peer>& peer);

  // Null if there is none. Thread: any.
  [[nodiscard]] std::shared_ptr<Peer> find(const std::string& address) const;

  // The client has disconnected: its registrations no longer count, and the service is asked to
  // remove them. Throws nothing.
  void disconnected(Peer& peer);

  // Tries again to unobserve the peers for which that failed.
  void retry();

  // Stops unobserving: the service is about to end.
  void end() { m_ended = true; }

 private:
  using Map = std::map<std::string, std::shared_ptr<Peer>>;

  void move(Map PeerRegistry::*from, const std::string& address, Map PeerRegistry::*to);
  void requestTurn();
  void takeTurn();
  const std::string* nextToUnobserve() const;  // null: none; valid until it is moved or removed
  void unobserve(const std::string& address);
  void forget(Map PeerRegistry::*map, const std::string& address);

  TurnQueue& m_turns;
  Registrations& m_registrations;
  const UnobserveOne m_unobserveOne;
  OneLinePerPause m_failures{"cannot be unobserved"};
  bool m_turnRequested = false;
  bool m_ended = false;
  mutable Mutex m_mutex;
  Map m_connected CLOCK_GUARDED_BY(m_mutex);
  Map m_disconnected CLOCK_GUARDED_BY(m_mutex);  // to be unobserved
  Map m_failed CLOCK_GUARDED_BY(m_mutex);        // the service may still use their proxies
};

}  // namespace host
