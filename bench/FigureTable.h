#pragma once

#include <span>

#include "Bound.h"
#include "Findings.h"

namespace bench {

// One figure of the table that is printed.
struct Figure {
  using Measure = void (*)(Findings& findings);

  const char* name;  // for --only and for the JSON
  const char* what;
  const char* floor;  // empty: none
  const char* unit;
  Bound bound;
  Measure measure;  // one may find several
};

[[nodiscard]] std::span<const Figure> figures();

}  // namespace bench
