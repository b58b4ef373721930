// floor_echo SOCKET CLIENTS: sends back what it is sent, and does nothing else.
#include <sys/epoll.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <vector>

#include "FloorSocket.h"

namespace {

using bench::acceptFrom;
using host::Descriptor;

// False when the client has gone.
bool echoOnce(int client) {
  std::array<char, 4096> bytes;
  const ssize_t got = recv(client, bytes.data(), bytes.size(), 0);
  return got > 0 && send(client, bytes.data(), static_cast<std::size_t>(got), MSG_NOSIGNAL) == got;
}

void serveOne(const Descriptor& listener) {
  const Descriptor client = acceptFrom(listener);
  while (echoOnce(client.get())) {
  }
}

void serveMany(const Descriptor& listener, std::size_t count) {
  const Descriptor ready(epoll_create1(EPOLL_CLOEXEC));
  std::vector<Descriptor> clients;
  for (std::size_t i = 0; i < count; ++i) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = clients.emplace_back(acceptFrom(listener)).get();
    epoll_ctl(ready.get(), EPOLL_CTL_ADD, event.data.fd, &event);
  }
  std::array<epoll_event, 128> events;
  for (;;) {
    const int found = epoll_wait(ready.get(), events.data(), static_cast<int>(events.size()), -1);
    for (int i = 0; i < found; ++i) {
      if (!echoOnce(events[static_cast<std::size_t>(i)].data.fd)) return;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    const Descriptor listener = bench::listenAt(argv[1]);
    const std::size_t clients = std::strtoul(argv[2], nullptr, 10);
    clients == 1 ? serveOne(listener) : serveMany(listener, clients);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "floor_echo: %s\n", error.what());
    return 1;
  }
  return 0;
}
