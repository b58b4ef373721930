#pragma once

#include <span>

#include "Figure.h"

namespace bench {

[[nodiscard]] std::span<const Figure> figures();

}  // namespace bench
