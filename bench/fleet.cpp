// How a fleet of telephones spreads its NTP restarts after a full hour: each device's first
// restart, from the plug-in's own functions, over the 600 one-second slots.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "ClockService/NtpRestart.h"

namespace {

constexpr std::size_t slots = 600;
constexpr std::uint32_t macTails = 1U << 24U;
using Histogram = std::array<std::uint32_t, slots>;

// What one device does once in its life: seed from its MAC address, then draw.
std::size_t firstSlot(std::uint32_t macTail) {
  std::array<char, 13> mac{};
  std::snprintf(mac.data(), mac.size(), "020000%06x", static_cast<unsigned int>(macTail));
  int seed = 0;
  if (NtpRestart::seedOf(mac.data(), seed) != NtpRestart::MacText::valid) std::abort();
  std::srand(static_cast<unsigned int>(seed));
  return static_cast<std::size_t>(NtpRestart::extraSeconds(std::rand()) - 1);
}

template <typename NextTail>
Histogram spread(std::uint32_t devices, NextTail nextTail) {
  Histogram histogram{};
  for (std::uint32_t i = 0; i < devices; ++i) ++histogram[firstSlot(nextTail(i))];
  return histogram;
}

Histogram consecutive(std::uint32_t devices) {
  return spread(devices, [](std::uint32_t i) { return i % macTails; });
}

Histogram random(std::uint32_t devices) {
  std::mt19937 generator(20240307);  // fixed: the same table each time
  std::uniform_int_distribution<std::uint32_t> tails(0, macTails - 1);
  return spread(devices, [&](std::uint32_t) { return tails(generator); });
}

struct Summary {
  double mean;
  std::uint32_t peak;
  std::size_t empty;
};

Summary summarise(const Histogram& histogram) {
  const double total = std::accumulate(histogram.begin(), histogram.end(), 0.0);
  return {total / static_cast<double>(slots), *std::max_element(histogram.begin(), histogram.end()),
          static_cast<std::size_t>(std::count(histogram.begin(), histogram.end(), 0U))};
}

void printRow(std::uint32_t devices, const char* macs, const Histogram& histogram) {
  const Summary summary = summarise(histogram);
  std::printf("%9u  %-11s  %10.1f  %10u  %11.2f  %11zu\n", devices, macs, summary.mean,
              summary.peak, summary.peak / summary.mean, summary.empty);
}

// Twenty seconds a line, so that the ten minutes fit a screen.
void printHistogram(const char* title, const Histogram& histogram) {
  constexpr std::size_t slotsPerLine = 20;
  constexpr double widest = 60.0;
  std::vector<double> lines;
  for (std::size_t i = 0; i < slots; i += slotsPerLine)
    lines.push_back(
        std::accumulate(histogram.begin() + static_cast<std::ptrdiff_t>(i),
                        histogram.begin() + static_cast<std::ptrdiff_t>(i + slotsPerLine), 0.0));
  const double highest = *std::max_element(lines.begin(), lines.end());
  std::printf("\n%s\n", title);
  for (std::size_t i = 0; i < lines.size(); ++i)
    std::printf("%4zu-%3zu s %8.0f %s\n", 601 + i * slotsPerLine, 600 + (i + 1) * slotsPerLine,
                lines[i],
                std::string(static_cast<std::size_t>(lines[i] / highest * widest), '#').c_str());
}

}  // namespace

int main(int argc, char** argv) try {
  CLI::App app("Spread of a fleet's NTP restarts after a full hour");
  std::vector<std::uint32_t> fleets{600, 60000, 1000000};
  app.add_option("devices", fleets, "Sizes of fleets")->check(CLI::Range(1U, macTails));
  CLI11_PARSE(app, argc, argv);
  std::printf("  devices  MACs         mean/slot   peak/slot    peak/mean  empty slots\n");
  for (const std::uint32_t devices : fleets) {
    printRow(devices, "consecutive", consecutive(devices));
    printRow(devices, "random", random(devices));
  }
  printHistogram("largest fleet, consecutive MACs: devices for each 20 s after the full hour",
                 consecutive(fleets.back()));
  printHistogram("largest fleet, random MACs", random(fleets.back()));
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "fleet: %s\n", error.what());
  return 1;
}
