#include "Findings.h"

namespace bench {

Measured ratioOf(const Rounds& rounds) {
  return {rounds.figure(), rounds.floor(), rounds.ratio()};
}

Measured differenceOf(const Rounds& rounds) {
  return {rounds.figure(), rounds.floor(), rounds.difference()};
}

Measured alone(double figure) {
  return {figure, std::nullopt, figure};
}

}  // namespace bench
