#include "load/Crowd.h"

#include <sys/socket.h>

#include <utility>

#include "base/Error.h"
#include "load/Latencies.h"

namespace load {
namespace {

// A boolean as the default codec writes it, the last value of a reply.
constexpr char kTrue = '\xc3';
constexpr char kFalse = '\xc2';

}  // namespace

Crowd::Crowd(const std::filesystem::path& socket, std::string burst, std::size_t calls,
             bool reconnects)
    : m_burst(std::move(burst)),
      m_calls(calls),
      m_reconnects(reconnects),
      m_thread([this, socket] { work(socket); }) {}

Crowd::~Crowd() {
  m_over = true;
  m_thread.join();
}

void Crowd::work(const std::filesystem::path& socket) try {
  while (!m_over) {
    std::deque<host::FrameSocket> clients;
    while (clients.size() < kCrowd && !m_over) clients.emplace_back(socket);
    do exchange(clients);
    while (!m_over && !m_reconnects);
  }
} catch (const host::Error&) {
  // The host has ended.
}

void Crowd::exchange(std::deque<host::FrameSocket>& clients) {
  for (host::FrameSocket& client : clients) {
    static_cast<void>(::send(client.descriptor(), m_burst.data(), m_burst.size(), MSG_NOSIGNAL));
  }
  for (host::FrameSocket& client : clients) readReplies(client);
}

void Crowd::readReplies(host::FrameSocket& client) {
  host::Frame frame;
  for (std::size_t left = m_calls; left > 0 && !m_over;) {
    if (!client.receive(frame, std::chrono::steady_clock::now() + kAnswerLimit)) return;
    if (frame.kind != host::FrameKind::reply) continue;
    --left;
    ++m_replies;
    if (frame.payload.back() == kTrue) ++m_accepted;
    if (frame.payload.back() == kFalse) ++m_refused;
  }
}

}  // namespace load
