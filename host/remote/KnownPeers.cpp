#include "remote/KnownPeers.h"

#include <chrono>
#include <exception>
#include <utility>

#include "remote/ClientBounds.h"
#include "remote/Peer.h"
#include "remote/Registrations.h"
#include "remote/TurnQueue.h"

namespace host {

KnownPeers::KnownPeers(TurnQueue& turns, Registrations& registrations, UnobserveOne unobserveOne)
    : m_turns(turns), m_registrations(registrations), m_unobserveOne(std::move(unobserveOne)) {}

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

// The service may keep the registrations for a while: a disconnected client gets no events.
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

// Moves the node itself, which needs no memory.
void KnownPeers::move(Map KnownPeers::*from, const std::string& address, Map KnownPeers::*to) {
  const MutexLock lock(m_mutex);
  if (auto entry = (this->*from).extract(address)) (this->*to).insert(std::move(entry));
}

// Without memory for it, the next connect or disconnect asks again.
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
    unobserve(*next);
    next = nextToLeave();
    if (std::chrono::steady_clock::now() >= end) break;
  }
  if (next != nullptr) askForTurn();
}

const std::string* KnownPeers::nextToLeave() const {
  const MutexLock lock(m_mutex);
  return m_leaving.empty() ? nullptr : &m_leaving.begin()->first;
}

void KnownPeers::unobserve(const std::string& address) {
  switch (m_unobserveOne(address)) {
    case Unobserved::one:
      return;
    case Unobserved::nothingLeft:
      return forget(&KnownPeers::m_leaving, address);
    case Unobserved::noAnswer:
      m_failures.log(address.c_str());
      return move(&KnownPeers::m_leaving, address, &KnownPeers::m_stuck);
  }
}

// REQUIRES: the service no longer uses the proxy.
void KnownPeers::forget(Map KnownPeers::*map, const std::string& address) {
  Map::node_type entry;
  {
    const MutexLock lock(m_mutex);
    entry = (this->*map).extract(address);
  }
  if (entry) entry.mapped()->freeProxy();
}

}  // namespace host
