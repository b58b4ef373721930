// Stands in for the external NTP client. Reports its command line through the pipe "clients" of its
// working folder, waits for SIGTERM, and reports its end.
//   "+PID\n" and each argument in a line of its own, then "MARK=value of CLOCK_TEST_MARK" and "."
//   "-PID\n.\n"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

void report(const std::string& message) {
  const int pipe = open("clients", O_WRONLY);
  if (pipe < 0 || write(pipe, message.data(), message.size()) < 0) _exit(3);
  close(pipe);
}

}  // namespace

int main(int argc, char** argv) {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGTERM);
  sigprocmask(SIG_BLOCK, &ending, nullptr);
  std::string message = "+" + std::to_string(getpid()) + "\n";
  for (int i = 0; i < argc; ++i) message += std::string(argv[i]) + "\n";
  const char* const mark = std::getenv("CLOCK_TEST_MARK");  // NOLINT(concurrency-mt-unsafe)
  report(message + "MARK=" + (mark != nullptr ? mark : "") + "\n.\n");
  int signal = 0;
  sigwait(&ending, &signal);
  report("-" + std::to_string(getpid()) + "\n.\n");
  return 0;
}
