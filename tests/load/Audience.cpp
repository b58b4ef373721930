#include "load/Audience.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <array>
#include <stdexcept>

namespace load {
namespace {

constexpr std::uint32_t kEnd = 0xffffffff;  // in the place of a subscriber's number

void watch(int events, int descriptor, std::uint32_t number) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u32 = number;
  if (::epoll_ctl(events, EPOLL_CTL_ADD, descriptor, &event) != 0) {
    throw std::runtime_error("cannot wait for a subscriber");
  }
}

}  // namespace

Audience::Audience(const std::filesystem::path& socket, std::size_t count)
    : m_events(::epoll_create1(EPOLL_CLOEXEC)),
      m_end(::eventfd(0, EFD_CLOEXEC)),
      m_heard(count, 0) {
  watch(m_events.get(), m_end.get(), kEnd);
  for (std::uint32_t number = 0; number < count; ++number) {
    m_subscribers.emplace_back(socket);
    watch(m_events.get(), m_subscribers.back().descriptor(), number);
  }
  m_thread = std::thread([this] { work(); });
}

Audience::~Audience() {
  ::eventfd_write(m_end.get(), 1);
  m_thread.join();
}

void Audience::announce(const std::vector<std::string>& events) {
  const std::lock_guard lock(m_mutex);
  m_announced.insert(m_announced.end(), events.begin(), events.end());
  m_outstanding += events.size() * m_subscribers.size();
}

bool Audience::hasHeardAll(std::chrono::seconds limit) {
  std::unique_lock lock(m_mutex);
  m_changed.wait_for(lock, limit, [this] { return m_outstanding == 0 || !m_fault.empty(); });
  return m_outstanding == 0 && m_fault.empty();
}

std::uint64_t Audience::announced() const {
  const std::lock_guard lock(m_mutex);
  return m_announced.size();
}

std::string Audience::fault() const {
  const std::lock_guard lock(m_mutex);
  return m_fault;
}

void Audience::work() {
  std::array<epoll_event, 64> ready;
  for (;;) {
    const int count = ::epoll_wait(m_events.get(), ready.data(), ready.size(), -1);
    for (int i = 0; i < count; ++i) {
      const std::uint32_t number = ready[static_cast<std::size_t>(i)].data.u32;
      if (number == kEnd) return;
      listen(number);
    }
  }
}

void Audience::listen(std::size_t number) {
  const std::lock_guard lock(m_mutex);
  try {
    m_subscribers[number].read([&](std::string_view event) { hear(number, event); });
  } catch (const std::exception& error) {
    fail(error.what());
    ::epoll_ctl(m_events.get(), EPOLL_CTL_DEL, m_subscribers[number].descriptor(), nullptr);
  }
  if (m_outstanding == 0) m_changed.notify_all();
}

void Audience::hear(std::size_t number, std::string_view event) {
  const std::size_t index = m_heard[number]++;
  if (index >= m_announced.size()) {
    return fail("subscriber " + std::to_string(number) + " heard an event that was not announced");
  }
  if (m_announced[index] != event) {
    fail("subscriber " + std::to_string(number) + " heard another event than number " +
         std::to_string(index));
  }
  --m_outstanding;
}

void Audience::fail(const std::string& fault) {
  if (m_fault.empty()) m_fault = fault;
  m_changed.notify_all();
}

}  // namespace load
