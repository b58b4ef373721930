// baseline_echo SOCKET CLIENTS: sends back what each client sends.
#include <sys/epoll.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "Listener.h"

namespace {

// False when the client has disconnected.
bool echoOnce(int client) {
  std::array<char, 4096> bytes;
  const ssize_t got = recv(client, bytes.data(), bytes.size(), 0);
  return got > 0 && send(client, bytes.data(), static_cast<std::size_t>(got), MSG_NOSIGNAL) == got;
}

void serveOne(const bench::Listener& listener) {
  const int client = listener.accept();
  while (echoOnce(client)) {
  }
}

void serveMany(const bench::Listener& listener, std::size_t count) {
  const int ready = epoll_create1(0);
  for (std::size_t i = 0; i < count; ++i) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = listener.accept();
    epoll_ctl(ready, EPOLL_CTL_ADD, event.data.fd, &event);
  }
  std::array<epoll_event, 128> events;
  for (;;) {
    const int found = epoll_wait(ready, events.data(), static_cast<int>(events.size()), -1);
    for (int i = 0; i < found; ++i) {
      if (!echoOnce(events[static_cast<std::size_t>(i)].data.fd)) return;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    const bench::Listener listener(argv[1]);
    const std::size_t clients = std::strtoul(argv[2], nullptr, 10);
    clients == 1 ? serveOne(listener) : serveMany(listener, clients);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "baseline_echo: %s\n", error.what());
    return 1;
  }
}
