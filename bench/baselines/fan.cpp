// baseline_fan SOCKET SUBSCRIBERS: sends what its first client sends to all others, then back.
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <vector>

#include "Listener.h"

namespace {

void serve(const bench::Listener& listener, std::size_t count) {
  const int first = listener.accept();
  std::vector<int> receivers;
  while (receivers.size() < count) receivers.push_back(listener.accept());
  receivers.push_back(first);
  std::array<char, 4096> bytes;
  for (;;) {
    const ssize_t got = recv(first, bytes.data(), bytes.size(), 0);
    if (got <= 0) return;
    for (const int receiver : receivers) {
      if (send(receiver, bytes.data(), static_cast<std::size_t>(got), MSG_NOSIGNAL) != got) return;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    serve(bench::Listener(argv[1]), std::strtoul(argv[2], nullptr, 10));
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "baseline_fan: %s\n", error.what());
    return 1;
  }
}
