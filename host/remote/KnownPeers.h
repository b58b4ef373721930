#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "base/Mutex.h"
#include "remote/RareLine.h"
#include "remote/UnobservePeer.h"

namespace host {

class Peer;
class Registrations;
class TurnQueue;

// The clients by address. A disconnected client stays until it is unobserved: its registrations are
// removed from the service in turns of the loop, however many clients disconnect together.
// Owner: the server. Thread: the loop's, except find(). Failure: a client that cannot be unobserved
// is logged (RareLine) and stays; retry() tries again.
class KnownPeers {
 public:
  // Removes one registration of the peer from the service.
  using UnobserveOne = std::function<Unobserved(const std::string& address)>;

  // REQUIRES: turns and registrations outlive it.
  KnownPeers(TurnQueue& turns, Registrations& registrations, UnobserveOne unobserveOne);
  ~KnownPeers();  // frees all proxies
  KnownPeers(const KnownPeers&) = delete;
  KnownPeers& operator=(const KnownPeers&) = delete;

  void add(const std::shared_ptr<Peer>& peer);

  // Null if there is none. Thread: any.
  [[nodiscard]] std::shared_ptr<Peer> find(const std::string& address) const;

  // The client has disconnected: its registrations no longer count. Throws nothing.
  void leave(Peer& peer);

  // Tries again to unobserve the peers for which that failed.
  void retry();

  // Stops unobserving: the service is about to end.
  void end() { m_over = true; }

 private:
  using Map = std::map<std::string, std::shared_ptr<Peer>>;

  void move(Map KnownPeers::*from, const std::string& address, Map KnownPeers::*to);
  void askForTurn();
  void takeTurn();
  const std::string* nextToLeave() const;  // null: none; valid until it is moved or removed
  void unobserve(const std::string& address);
  void forget(Map KnownPeers::*map, const std::string& address);

  TurnQueue& m_turns;
  Registrations& m_registrations;
  const UnobserveOne m_unobserveOne;
  RareLine m_failures{"cannot be unobserved"};
  bool m_waiting = false;  // for a turn
  bool m_over = false;
  mutable Mutex m_mutex;
  Map m_here CLOCK_GUARDED_BY(m_mutex);
  Map m_leaving CLOCK_GUARDED_BY(m_mutex);
  Map m_stuck CLOCK_GUARDED_BY(m_mutex);  // disconnected, but the service may still use the proxies
};

}  // namespace host
