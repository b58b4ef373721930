#include "remote/FrameTap.h"

#include <exception>
#include <utility>

namespace host {
namespace {

thread_local bool t_showing = false;  // a listener runs; the frames that it sends are not shown

bool wantsMore(const FrameTap::Listener& listener, const TappedFrame& frame) try {
  return listener(frame);
} catch (const std::exception&) {
  return true;
}

}  // namespace

std::uint64_t FrameTap::add(Listener listener) {
  const MutexLock lock(m_mutex);
  m_listeners.emplace(++m_lastNumber, std::move(listener));
  m_size = m_listeners.size();
  return m_lastNumber;
}

void FrameTap::remove(std::uint64_t number) {
  const MutexLock lock(m_mutex);
  m_listeners.erase(number);
  m_size = m_listeners.size();
}

void FrameTap::show(const TappedFrame& frame) noexcept {
  if (m_size == 0 || t_showing) return;
  const MutexLock lock(m_mutex);
  t_showing = true;
  std::erase_if(m_listeners, [&](const auto& each) { return !wantsMore(each.second, frame); });
  m_size = m_listeners.size();
  t_showing = false;
}

}  // namespace host
