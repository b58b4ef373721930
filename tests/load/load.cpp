// load [--seconds N]: 500 subscribers and 64 callers against one host, then every attack at once
// against another. Exit status: 0 everybody got what was due, 1 somebody did not, 2 usage, 128 +
// signal when it was stopped.

#include <charconv>
#include <exception>
#include <iostream>
#include <string_view>

#include "load/AttackRun.h"
#include "load/LoadRun.h"
#include "support/Interruption.h"

namespace {

constexpr int kWarmUpPart = 6;  // of the whole time, and no more than ten seconds

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

bool bystandersAreServed(std::chrono::milliseconds duration) {
  const load::AttackFigures figures = load::attackAHost(duration);
  const std::string complaint = complaintAbout(figures, load::kMostP99);
  std::cout << toText(figures);
  if (!complaint.empty()) std::cout << complaint << '\n';
  return complaint.empty();
}

}  // namespace

int main(int argc, char** argv) try {
  load::Size size;
  if (!parse(argc, argv, size)) {
    std::cerr << "usage: load [--seconds N]\n";
    return 2;
  }
  const support::Interruption interruption;
  load::LoadRun everybody(size);
  const bool served = everybody.run();
  std::cout << size.subscribers << " subscribers, " << size.callers << " callers, "
            << size.duration.count() / 1000 << " s\n"
            << toText(everybody.figures());
  if (!served) std::cout << everybody.fault() << '\n';
  return support::Interruption::statusOr(served && bystandersAreServed(size.duration) ? 0 : 1);
} catch (const std::exception& error) {
  std::cerr << "load: " << error.what() << '\n';
  return support::Interruption::statusOr(1);
}
