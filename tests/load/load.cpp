// load [--seconds N]: 500 subscribers and 64 callers at one host, then every attack at once on
// another. Exit status: 0 every client was served as it must be, 1 one was not, 2 usage, 128 +
// signal when it was stopped.

#include <charconv>
#include <exception>
#include <iostream>
#include <string_view>

#include "load/AttackRun.h"
#include "load/LoadRun.h"
#include "support/Interruption.h"

namespace {

constexpr int kWarmUpPart = 6;  // of the whole time; at most ten seconds

bool parse(int argc, char** argv, load::Size& size) {
  if (argc == 1) return true;
  if (argc != 3 || std::string_view(argv[1]) != "--seconds") return false;
  const std::string_view text = argv[2];
  int seconds = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (read.ec != std::errc() || read.ptr != text.data() + text.size() || seconds < 1) return false;
  size.duration = std::chrono::seconds(seconds);
  size.warmUp = std::min(size.warmUp, size.duration / kWarmUpPart);
  return true;
}

// Prints the figures, and what is wrong with them. False: something is.
template <class Figures, class... Bounds>
bool report(const Figures& figures, Bounds... bounds) {
  const std::string complaint = complaintAbout(figures, bounds...);
  std::cout << toText(figures) << complaint << (complaint.empty() ? "" : "\n");
  return complaint.empty();
}

bool run(const load::Size& size) {
  std::cout << size.subscribers << " subscribers, " << size.callers << " callers, "
            << size.duration.count() / 1000 << " s\n";
  return report(load::loadAHost(size)) && report(load::attackAHost(size.duration), load::kMostP99);
}

}  // namespace

int main(int argc, char** argv) try {
  load::Size size;
  if (!parse(argc, argv, size)) {
    std::cerr << "usage: load [--seconds N]\n";
    return 2;
  }
  const support::Interruption interruption;
  return support::Interruption::statusOr(run(size) ? 0 : 1);
} catch (const std::exception& error) {
  std::cerr << "load: " << error.what() << '\n';
  return support::Interruption::statusOr(1);
}
