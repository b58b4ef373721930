// How a fleet of telephones spreads its NTP requests after a full hour: each device's first two
// restarts, from the plug-in's own functions, over the 600 one-second slots.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "ClockService/NtpRestart.h"
#include "apps/OptionParser.h"
#include "base/PrintableText.h"
#include "base/StandardOutput.h"
#include "verbs/UsageError.h"

namespace {

constexpr std::size_t kSlots = 600;
constexpr std::uint32_t kMacTails = 1U << 24U;
using Histogram = std::array<std::uint32_t, kSlots>;

// Requests in each slot after the first full hour of a fleet, and after any later one.
struct Hours {
  Histogram first{};
  Histogram later{};
};

std::size_t drawnSlot() {
  return static_cast<std::size_t>(NtpRestart::extraSeconds(std::rand()) - 1);
}

// What one device does: seed once in its life from its MAC address, then draw for each hour. A new
// client asks when it starts, and again an hour later unless the next one has replaced it by then.
void addDevice(std::uint32_t macTail, Hours& hours) {
  std::array<char, 13> mac{};
  std::snprintf(mac.data(), mac.size(), "020000%06x", static_cast<unsigned int>(macTail));
  int seed = 0;
  if (NtpRestart::seedOf(mac.data(), seed) != NtpRestart::MacText::valid) std::abort();
  std::srand(static_cast<unsigned int>(seed));
  const std::size_t old = drawnSlot();
  const std::size_t next = drawnSlot();
  ++hours.first[old];
  ++hours.later[next];
  if (old < next) ++hours.later[old];
}

template <typename NextTail>
Hours spread(std::uint32_t devices, NextTail nextTail) {
  Hours hours;
  for (std::uint32_t i = 0; i < devices; ++i) addDevice(nextTail(i), hours);
  return hours;
}

Hours consecutive(std::uint32_t devices) {
  return spread(devices, [](std::uint32_t i) { return i % kMacTails; });
}

Hours random(std::uint32_t devices) {
  std::mt19937 generator(20240307);  // fixed: the same table each time
  std::uniform_int_distribution<std::uint32_t> tails(0, kMacTails - 1);
  return spread(devices, [&](std::uint32_t) { return tails(generator); });
}

struct Summary {
  double total;
  double mean;
  std::uint32_t peak;
  std::size_t fullest;  // the slot of the peak
  std::size_t empty;
};

Summary summarise(const Histogram& histogram) {
  const double total = std::accumulate(histogram.begin(), histogram.end(), 0.0);
  const auto peak = std::max_element(histogram.begin(), histogram.end());
  return {total, total / static_cast<double>(kSlots), *peak,
          static_cast<std::size_t>(peak - histogram.begin()),
          static_cast<std::size_t>(std::count(histogram.begin(), histogram.end(), 0U))};
}

void printRow(std::uint32_t devices, const char* macs, const char* hour,
              const Histogram& histogram) {
  const Summary summary = summarise(histogram);
  std::printf("%9u  %-11s  %-5s  %9.0f  %9.1f  %9u  %9.2f  %7zu  %11zu\n", devices, macs, hour,
              summary.total, summary.mean, summary.peak, summary.peak / summary.mean,
              601 + summary.fullest, summary.empty);
}

void printRows(std::uint32_t devices, const char* macs, const Hours& hours) {
  printRow(devices, macs, "first", hours.first);
  printRow(devices, macs, "later", hours.later);
}

// Twenty seconds a line, so that the ten minutes fit a screen.
void printHistogram(const char* title, const Histogram& histogram) {
  constexpr std::size_t kSlotsPerLine = 20;
  constexpr double kWidest = 60.0;
  std::vector<double> lines;
  for (std::size_t i = 0; i < kSlots; i += kSlotsPerLine) {
    lines.push_back(
        std::accumulate(histogram.begin() + static_cast<std::ptrdiff_t>(i),
                        histogram.begin() + static_cast<std::ptrdiff_t>(i + kSlotsPerLine), 0.0));
  }
  const double highest = *std::max_element(lines.begin(), lines.end());
  std::printf("\n%s\n", title);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::printf("%4zu-%3zu s %8.0f %s\n", 601 + i * kSlotsPerLine, 600 + (i + 1) * kSlotsPerLine,
                lines[i],
                std::string(static_cast<std::size_t>(lines[i] / highest * kWidest), '#').c_str());
  }
}

void printTable(const std::vector<std::uint32_t>& fleets) {
  std::printf(
      "  devices  MACs         hour    requests  mean/slot  peak/slot  peak/mean  at s    "
      "empty slots\n");
  for (const std::uint32_t devices : fleets) {
    printRows(devices, "consecutive", consecutive(devices));
    printRows(devices, "random", random(devices));
  }
  const Hours last = random(fleets.back());
  printHistogram("last fleet, random MACs, first hour: requests for each 20 s after the full hour",
                 last.first);
  printHistogram("the same, any later hour", last.later);
}

std::vector<std::uint32_t> sizesIn(const std::vector<std::string>& words) {
  if (words.empty()) return {600, 60000, 1000000};
  std::vector<std::uint32_t> sizes;
  for (const std::string& word : words) {
    std::uint64_t size = 0;
    const std::string error = host::readNumber(word, 1, kMacTails, size);
    if (!error.empty()) throw host::UsageError("DEVICES: " + error);
    sizes.push_back(static_cast<std::uint32_t>(size));
  }
  return sizes;
}

constexpr host::ExitStatus kStatuses[] = {{0, "done"}, {1, "failed"}, {2, "wrong command line"}};

}  // namespace

int main(int argc, char** argv) try {
  host::OptionParser parser({"fleet",
                             "Shows how fleets of so many DEVICES (600, 60000 and 1000000) spread "
                             "their NTP requests after a full hour.",
                             "[DEVICES ...]", kStatuses});
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (parser.readToRun(words, std::cout)) printTable(sizesIn(parser.arguments()));
  return host::outputArrived("fleet") ? 0 : 1;
} catch (const host::UsageError& error) {
  std::cerr << host::errorLine("fleet", error.what());
  return 2;
} catch (const std::exception& error) {
  std::cerr << "fleet: " << error.what() << '\n';
  return 1;
}
