#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "base/Mutex.h"
#include "remote/RareLine.h"
#include "remote/TakeBack.h"

namespace host {

class Peer;
class Registrations;
class TurnQueue;

// The clients by address. A client that is gone stays until the service has forgotten it: its
// registrations are taken back in turns of the loop, however many clients leave together.
// Owner: the server. Thread: the loop's, except find(). Failure: a client that the service does not
// forget is logged (RareLine) and stays; retry() tries again.
class KnownPeers {
 public:
  // Takes one registration back from the service.
  using TakeOneBack = std::function<TakenBack(const std::string& address)>;

  // Both outlive it.
  KnownPeers(TurnQueue& turns, Registrations& registrations, TakeOneBack takeOneBack);
  ~KnownPeers();  // frees all proxies
  KnownPeers(const KnownPeers&) = delete;
  KnownPeers& operator=(const KnownPeers&) = delete;

  void add(const std::shared_ptr<Peer>& peer);

  // Null without one. Thread: any.
  [[nodiscard]] std::shared_ptr<Peer> find(const std::string& address) const;

  // The client is gone: its registrations count no more. Throws nothing.
  void leave(Peer& peer);

  // Takes back from those again where it failed.
  void retry();

  // From now on nothing is taken back: the service is about to end.
  void end() { m_over = true; }

 private:
  using Map = std::map<std::string, std::shared_ptr<Peer>>;

  void move(Map KnownPeers::*from, const std::string& address, Map KnownPeers::*to);
  void askForTurn();
  void takeTurn();
  const std::string* nextToLeave() const;  // null: none; stays until it is moved or forgotten
  void takeOne(const std::string& address);
  void forget(Map KnownPeers::*map, const std::string& address);

  TurnQueue& m_turns;
  Registrations& m_registrations;
  const TakeOneBack m_takeOneBack;
  RareLine m_failures{"cannot be taken out of the service"};
  bool m_waiting = false;  // for a turn
  bool m_over = false;
  mutable Mutex m_mutex;
  Map m_here CLOCK_GUARDED_BY(m_mutex);
  Map m_leaving CLOCK_GUARDED_BY(m_mutex);
  Map m_stuck CLOCK_GUARDED_BY(m_mutex);  // gone, and the service may still use their proxies
};

}  // namespace host
