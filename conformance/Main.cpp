#include <gtest/gtest.h>

#include "Promise.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  return conformance::runPromises();
}
