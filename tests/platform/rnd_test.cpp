// rnd_test.cpp -- the seeded generator: the top 53 bits of mt19937_64, scaled into [0, 1).
#include "platform/rnd.h"

#include <gtest/gtest.h>

#include <random>

using namespace trelvane;

TEST(Rnd, TopFiftyThreeBitsOfMt19937_64) {
  Rnd r(1);
  std::mt19937_64 g(1);
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(r(), static_cast<double>(g() >> 11) / 9007199254740992.0) << i;
  }
}
