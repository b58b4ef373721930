// powercuts [--seed N] [--cuts N]: kills a telephone's host again and again, and checks that it has
// kept what it acknowledged. Exit status: 0 all kept, 1 something lost, 2 usage, 128 + signal when
// stopped by one.

#include <charconv>
#include <chrono>
#include <iostream>
#include <random>
#include <string_view>

#include "powercut/PowerCuts.h"
#include "support/Interruption.h"

namespace {

struct Options {
  std::uint64_t seed = std::random_device{}();
  std::uint64_t cuts = 1000;
};

bool read(std::string_view text, std::uint64_t& number) {
  const auto end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end;
}

bool parse(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    std::uint64_t* const number = name == "--seed"   ? &options.seed
                                  : name == "--cuts" ? &options.cuts
                                                     : nullptr;
    if (number == nullptr || i + 1 == argc || !read(argv[i + 1], *number)) return false;
  }
  return options.cuts > 0;
}

}  // namespace

int main(int argc, char** argv) try {
  Options options;
  if (!parse(argc, argv, options)) {
    std::cerr << "usage: powercuts [--seed N] [--cuts N]\n";
    return 2;
  }
  std::cout << "seed " << options.seed << std::endl;
  const auto begin = std::chrono::steady_clock::now();
  const support::Interruption interruption;
  powercut::PowerCuts telephone(options.seed);
  if (!telephone.cut(options.cuts)) {
    std::cout << telephone.failure() << '\n';
    return support::Interruption::statusOr(1);
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::cout << powercut::toText(telephone.figures()) << "; in " << took.count() << " s\n";
  return 0;
} catch (const std::exception& error) {
  std::cerr << "powercuts: " << error.what() << '\n';
  return support::Interruption::statusOr(1);
}
