// 500 subscribers and 64 callers at one host, then every attack at once on another.

#include <algorithm>
#include <chrono>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "apps/OptionParser.h"
#include "base/PrintableText.h"
#include "base/StandardOutput.h"
#include "load/AttackRun.h"
#include "load/LoadRun.h"
#include "support/Interruption.h"
#include "verbs/UsageError.h"

namespace {

constexpr int kWarmUpPart = 6;  // of the whole time; at most ten seconds

constexpr host::ExitStatus kStatuses[] = {
    {0, "every client was served as it must be"},
    {1, "one was not"},
    {2, "wrong option"},
    {128, "and the number of the signal that stopped it"},
};

constexpr int kLongest = 86'400;  // seconds

host::OptionParser parserInto(int& seconds) {
  host::OptionParser parser({"load",
                             "Serves 500 subscribers and 64 callers with one host, then every "
                             "attack at once with another.",
                             "", kStatuses});
  parser.addNumber("--seconds", "N", "How long each of both lasts", seconds, 1, kLongest);
  return parser;
}

// Prints the figures, and what is wrong with them. False: something is.
template <class Figures, class... Bounds>
bool report(const Figures& figures, Bounds... bounds) {
  const std::string complaint = complaintAbout(figures, bounds...);
  std::cout << toText(figures) << complaint << (complaint.empty() ? "" : "\n");
  return complaint.empty();
}

bool run(std::chrono::seconds duration) {
  load::Size size;
  size.duration = duration;
  size.warmUp = std::min(size.warmUp, size.duration / kWarmUpPart);
  const support::Interruption interruption;
  std::cout << size.subscribers << " subscribers, " << size.callers << " callers, "
            << duration.count() << " s\n";
  return report(load::loadAHost(size)) && report(load::attackAHost(size.duration), load::kMostP99);
}

}  // namespace

int main(int argc, char** argv) try {
  int seconds = 60;
  const std::vector<std::string> words(argv + 1, argv + argc);
  const bool right =
      !parserInto(seconds).readToRun(words, std::cout) || run(std::chrono::seconds(seconds));
  return support::Interruption::statusOr(right && host::outputArrived("load") ? 0 : 1);
} catch (const host::UsageError& error) {
  std::cerr << host::errorLine("load", error.what());
  return 2;
} catch (const std::exception& error) {
  std::cerr << "load: " << error.what() << '\n';
  return support::Interruption::statusOr(1);
}
