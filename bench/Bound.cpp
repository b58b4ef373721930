#include "Bound.h"

#include <array>
#include <cstdio>

namespace bench {
namespace {

std::string printed(double number) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%.6g", number);
  return text.data();
}

}  // namespace

Bound Bound::widened(double factor) const {
  Bound wider = *this;
  if (timed) wider.limit = kind == Kind::ratioAtLeast ? limit / factor : limit * factor;
  return wider;
}

bool Bound::holds(double compared) const {
  switch (kind) {
    case Kind::ratioAtLeast:
      return compared >= limit;
    case Kind::exactly:
      return compared == limit;
    case Kind::none:
      return true;
    default:
      return compared <= limit;
  }
}

std::string Bound::text() const {
  switch (kind) {
    case Kind::ratioAtMost:
      return "<= " + printed(limit) + " x";
    case Kind::ratioAtLeast:
      return ">= " + printed(limit) + " x";
    case Kind::differenceAtMost:
      return "<= + " + printed(limit);
    case Kind::atMost:
      return "<= " + printed(limit);
    case Kind::exactly:
      return "= " + printed(limit);
    case Kind::none:
      return "-";
  }
  return {};
}

}  // namespace bench
