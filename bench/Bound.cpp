#include "Bound.h"

#include <array>
#include <cstdio>

namespace bench {
namespace {

std::string shortly(double number) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%.6g", number);
  return text.data();
}

}  // namespace

Bound Bound::widened(double factor) const {
  Bound wider = *this;
  if (!timed) return wider;
  switch (kind) {
    case Kind::ratioAtLeast:
      wider.limit /= factor;
      break;
    case Kind::exponentAtMost:
      wider.limit = 1 + (limit - 1) * factor;
      break;
    default:
      wider.limit *= factor;
  }
  return wider;
}

bool Bound::holds(const Measured& measured) const {
  switch (kind) {
    case Kind::ratioAtLeast:
      return measured.compared >= limit;
    case Kind::between:
      return measured.compared >= other && measured.compared <= limit;
    case Kind::none:
      return true;
    default:
      return measured.compared <= limit;
  }
}

std::string Bound::text() const {
  switch (kind) {
    case Kind::ratioAtMost:
      return "<= " + shortly(limit) + " x";
    case Kind::ratioAtLeast:
      return ">= " + shortly(limit) + " x";
    case Kind::differenceAtMost:
      return "<= + " + shortly(limit);
    case Kind::atMost:
    case Kind::exponentAtMost:
      return "<= " + shortly(limit);
    case Kind::between:
      return other < limit ? shortly(other) + " or " + shortly(limit) : "= " + shortly(limit);
    case Kind::none:
      return "-";
  }
  return {};
}

}  // namespace bench
