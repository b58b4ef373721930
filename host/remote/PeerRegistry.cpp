#include "remote/PeerRegistry.h"

#include <chrono>
#include <exception>
#include <utility>

#include "remote/ClientLimits.h"
#include "remote/Peer.h"
#include "remote/Registrations.h"
#include "remote/TurnQueue.h"

namespace host {

PeerRegistry::PeerRegistry(TurnQueue& turns, Registrations& registrations,
                           UnobserveOne unobserveOne)
    : m_turns(turns), m_registrations(registrations), m_unobserveOne(std::move(unobserveOne)) {}

PeerRegistry::~PeerRegistry() {
  for (const Map* const map : {&m_connected, &m_disconnected, &m_failed}) {
    for (const auto& [address, peer] : *map) peer->freeProxy();
  }
}

void PeerRegistry::add(const std::shared_ptr<Peer>& peer) {
  const MutexLock lock(m_mutex);
  m_connected.emplace(peer->address(), peer);
}

std::shared_ptr<Peer> PeerRegistry::find(const std::string& address) const {
  const MutexLock lock(m_mutex);
  for (const Map* const map : {&m_connected, &m_disconnected, &m_failed}) {
    if (const auto found = map->find(address); found != map->end()) return found->second;
  }
  return nullptr;
}

// The service may keep the registrations for a while: a disconnected client gets no events.
void PeerRegistry::disconnected(Peer& peer) {
  m_registrations.forget(peer);
  if (!peer.hasProxy()) return forget(&PeerRegistry::m_connected, peer.address());
  move(&PeerRegistry::m_connected, peer.address(), &PeerRegistry::m_disconnected);
  requestTurn();
}

void PeerRegistry::retry() {
  {
    const MutexLock lock(m_mutex);
    m_disconnected.merge(m_failed);
    if (m_disconnected.empty()) return;
  }
  requestTurn();
}

// Moves the node itself, which needs no memory.
void PeerRegistry::move(Map PeerRegistry::*from, const std::string& address,
                        Map PeerRegistry::*to) {
  const MutexLock lock(m_mutex);
  if (auto entry = (this->*from).extract(address)) (this->*to).insert(std::move(entry));
}

// Without memory for it, the next connect or disconnect requests it again.
void PeerRegistry::requestTurn() try {
  if (m_turnRequested || m_ended) return;
  m_turns.add([this] { takeTurn(); });
  m_turnRequested = true;
} catch (const std::exception&) {
}

void PeerRegistry::takeTurn() {
  m_turnRequested = false;
  if (m_ended) return;
  const auto end = std::chrono::steady_clock::now() + kTurn;
  const std::string* next = nextToUnobserve();
  for (std::size_t calls = 0; calls < kFramesInTurn && next != nullptr; ++calls) {
    unobserve(*next);
    next = nextToUnobserve();
    if (std::chrono::steady_clock::now() >= end) break;
  }
  if (next != nullptr) requestTurn();
}

const std::string* PeerRegistry::nextToUnobserve() const {
  const MutexLock lock(m_mutex);
  return m_disconnected.empty() ? nullptr : &m_disconnected.begin()->first;
}

void PeerRegistry::unobserve(const std::string& address) {
  switch (m_unobserveOne(address)) {
    case Unobserved::one:
      return;
    case Unobserved::nothingLeft:
      return forget(&PeerRegistry::m_disconnected, address);
    case Unobserved::noAnswer:
      m_failures.log(address.c_str());
      return move(&PeerRegistry::m_disconnected, address, &PeerRegistry::m_failed);
  }
}

// REQUIRES: the service no longer uses the proxy.
void PeerRegistry::forget(Map PeerRegistry::*map, const std::string& address) {
  Map::node_type entry;
  {
    const MutexLock lock(m_mutex);
    entry = (this->*map).extract(address);
  }
  if (entry) entry.mapped()->freeProxy();
}

}  // namespace host
