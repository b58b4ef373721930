#include "remote/KnownPeers.h"

#include <chrono>
#include <exception>
#include <utility>

#include "remote/ClientBounds.h"
#include "remote/Peer.h"
#include "remote/Registrations.h"
#include "remote/TurnQueue.h"

namespace host {

KnownPeers::KnownPeers(TurnQueue& turns, Registrations& registrations, TakeOneBack takeOneBack)
    : m_turns(turns), m_registrations(registrations), m_takeOneBack(std::move(takeOneBack)) {}

KnownPeers::~KnownPeers() {
  for (const Map* const map : {&m_here, &m_leaving, &m_stuck}) {
    for (const auto& [address, peer] : *map) peer->freeProxy();
  }
}

void KnownPeers::add(const std::shared_ptr<Peer>& peer) {
  const MutexLock lock(m_mutex);
  m_here.emplace(peer->address(), peer);
}

std::shared_ptr<Peer> KnownPeers::find(const std::string& address) const {
  const MutexLock lock(m_mutex);
  for (const Map* const map : {&m_here, &m_leaving, &m_stuck}) {
    if (const auto found = map->find(address); found != map->end()) return found->second;
  }
  return nullptr;
}

// The service may keep its registrations for a while: they send a gone client nothing.
void KnownPeers::leave(Peer& peer) {
  m_registrations.forget(peer);
  if (!peer.hasProxy()) return forget(&KnownPeers::m_here, peer.address());
  move(&KnownPeers::m_here, peer.address(), &KnownPeers::m_leaving);
  askForTurn();
}

void KnownPeers::retry() {
  {
    const MutexLock lock(m_mutex);
    m_leaving.merge(m_stuck);
    if (m_leaving.empty()) return;
  }
  askForTurn();
}

// Moves the entry as it is, which takes no memory.
void KnownPeers::move(Map KnownPeers::*from, const std::string& address, Map KnownPeers::*to) {
  const MutexLock lock(m_mutex);
  if (auto entry = (this->*from).extract(address)) (this->*to).insert(std::move(entry));
}

// Without memory for it, the next client that comes or goes asks again.
void KnownPeers::askForTurn() try {
  if (m_waiting || m_over) return;
  m_turns.wait([this] { takeTurn(); });
  m_waiting = true;
} catch (const std::exception&) {
}

void KnownPeers::takeTurn() {
  m_waiting = false;
  if (m_over) return;
  const auto end = std::chrono::steady_clock::now() + kTurn;
  const std::string* next = nextToLeave();
  for (std::size_t asked = 0; asked < kFramesInTurn && next != nullptr; ++asked) {
    takeOne(*next);
    next = nextToLeave();
    if (std::chrono::steady_clock::now() >= end) break;
  }
  if (next != nullptr) askForTurn();
}

const std::string* KnownPeers::nextToLeave() const {
  const MutexLock lock(m_mutex);
  return m_leaving.empty() ? nullptr : &m_leaving.begin()->first;
}

void KnownPeers::takeOne(const std::string& address) {
  switch (m_takeOneBack(address)) {
    case TakenBack::one:
      return;
    case TakenBack::nothingLeft:
      return forget(&KnownPeers::m_leaving, address);
    case TakenBack::noAnswer:
      m_failures.log(address.c_str());
      return move(&KnownPeers::m_leaving, address, &KnownPeers::m_stuck);
  }
}

// The service does not use its proxy, and will not.
void KnownPeers::forget(Map KnownPeers::*map, const std::string& address) {
  Map::node_type entry;
  {
    const MutexLock lock(m_mutex);
    entry = (this->*map).extract(address);
  }
  if (entry) entry.mapped()->freeProxy();
}

}  // namespace host
