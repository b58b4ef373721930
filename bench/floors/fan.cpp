// floor_fan SOCKET SUBSCRIBERS: what its first client sends it sends to all the others, and then
// back.
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

void serve(const Descriptor& listener, std::size_t count) {
  const Descriptor first = acceptFrom(listener);
  std::vector<Descriptor> subscribers;
  for (std::size_t i = 0; i < count; ++i) subscribers.push_back(acceptFrom(listener));
  std::array<char, 4096> bytes;
  for (;;) {
    const ssize_t got = recv(first.get(), bytes.data(), bytes.size(), 0);
    if (got <= 0) return;
    const auto size = static_cast<std::size_t>(got);
    for (const Descriptor& subscriber : subscribers) {
      if (send(subscriber.get(), bytes.data(), size, MSG_NOSIGNAL) != got) return;
    }
    if (send(first.get(), bytes.data(), size, MSG_NOSIGNAL) != got) return;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    serve(bench::listenAt(argv[1]), std::strtoul(argv[2], nullptr, 10));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "floor_fan: %s\n", error.what());
    return 1;
  }
  return 0;
}
