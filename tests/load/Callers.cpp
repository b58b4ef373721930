#include "load/Callers.h"

#include <utility>

#include "remote/RemoteClient.h"

namespace load {
Callers::Callers(const std::filesystem::path& socket, int count) {
  for (int i = 0; i < count; ++i) m_threads.emplace_back([this, socket] { work(socket); });
}

Callers::~Callers() {
  m_over = true;
  for (std::thread& thread : m_threads) thread.join();
}

Latencies Callers::take() {
  const std::lock_guard lock(m_mutex);
  if (m_failure) std::rethrow_exception(m_failure);
  return std::exchange(m_latencies, {});
}

void Callers::work(const std::filesystem::path& socket) try {
  host::RemoteClient client(socket);
  while (!m_over) {
    Method call("getTime", Method::call);
    const auto begin = std::chrono::steady_clock::now();
    if (!client.call(call, kAnswerLimit)) throw host::HostGone("a call is not answered");
    const auto duration = std::chrono::steady_clock::now() - begin;
    const std::lock_guard lock(m_mutex);
    m_latencies.add(duration);
  }
} catch (const std::exception&) {
  const std::lock_guard lock(m_mutex);
  m_failure = std::current_exception();
}

}  // namespace load
