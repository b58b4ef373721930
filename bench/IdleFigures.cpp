// What a host's threads do while nobody asks it anything.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"

namespace bench {
namespace {

constexpr std::chrono::milliseconds kSettling{500};  // what a start leaves to be done later
constexpr std::chrono::seconds kIdle{2};
constexpr int kLooks = 3;

std::size_t sleepsOf(const std::filesystem::path& thread) {
  std::ifstream status(thread / "status");
  for (std::string word; status >> word;) {
    if (std::size_t count = 0; word == "voluntary_ctxt_switches:" && status >> count) return count;
  }
  throw std::runtime_error("the system does not tell how often a thread has slept");
}

// How often its threads have gone to sleep. Who wakes goes to sleep again, so it grows with each.
std::size_t sleepsOf(pid_t process) {
  std::size_t count = 0;
  const std::filesystem::path threads = "/proc/" + std::to_string(process) + "/task";
  for (const auto& thread : std::filesystem::directory_iterator(threads)) {
    count += sleepsOf(thread.path());
  }
  return count;
}

// What wakes now and then does so in each of the looks; what a busy machine has left over from the
// start, in the first.
std::size_t fewestSleepsOf(pid_t process) {
  std::size_t fewest = SIZE_MAX;
  for (int look = 0; look < kLooks && fewest > 0; ++look) {
    const std::size_t before = sleepsOf(process);
    std::this_thread::sleep_for(kIdle);
    fewest = std::min(fewest, sleepsOf(process) - before);
  }
  return fewest;
}

}  // namespace

// Far from a full hour, at the speed of real time.
void measureIdle(Findings& findings) {
  const Folder folder;
  const HostProgram host(folder, folder / "state", {"--at", "2030-01-15T12:20:00+00:00"});
  const Line line(host.socket());
  line.send(callOf("getTime"));
  static_cast<void>(line.takeFrame());
  std::this_thread::sleep_for(kSettling);
  findings["idle-wakes"] = alone(static_cast<double>(fewestSleepsOf(host.process())));
}

}  // namespace bench
