#include "load/Callers.h"

#include "remote/RemoteClient.h"

namespace load {
namespace {

constexpr std::chrono::seconds kLimit(10);

}  // namespace

Callers::Callers(const std::filesystem::path& socket, int count) {
  for (int i = 0; i < count; ++i) {
    Caller& caller = m_callers.emplace_back();
    caller.thread = std::thread([this, &caller, socket] { work(caller, socket); });
  }
}

Callers::~Callers() {
  m_over = true;
  for (Caller& caller : m_callers) caller.thread.join();
}

Latencies Callers::take() {
  Latencies all;
  for (Caller& caller : m_callers) {
    const std::lock_guard lock(caller.mutex);
    all.add(std::exchange(caller.latencies, Latencies()));
  }
  return all;
}

std::string Callers::fault() {
  const std::lock_guard lock(m_faultMutex);
  return m_fault;
}

void Callers::work(Caller& caller, const std::filesystem::path& socket) try {
  host::RemoteClient client(socket);
  while (!m_over) {
    Method call("getTime", Method::call);
    const auto begin = std::chrono::steady_clock::now();
    if (!client.call(call, kLimit)) throw host::HostGone("a call is not answered");
    const std::lock_guard lock(caller.mutex);
    caller.latencies.add(std::chrono::steady_clock::now() - begin);
  }
} catch (const std::exception& error) {
  const std::lock_guard lock(m_faultMutex);
  if (m_fault.empty()) m_fault = error.what();
}

}  // namespace load
