// Stands in for the external NTP client where many are replaced. CLOCK_TEST_CLIENT says how it
// behaves: "exits" at once, "hangs" and will not be ended (it makes the file "hanging" when it is
// that far), or waits to be ended.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

int main() {
  const char* const text = std::getenv("CLOCK_TEST_CLIENT");  // NOLINT(concurrency-mt-unsafe)
  const std::string behaviour = text != nullptr ? text : "";
  if (behaviour == "exits") return 1;
  if (behaviour == "hangs") {
    std::signal(SIGTERM, SIG_IGN);
    close(open("hanging", O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  }
  for (;;) pause();
}
