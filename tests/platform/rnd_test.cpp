// rnd_test.cpp -- the seeded generator gives fixed values in [0, 1).
#include "platform/rnd.h"

#include <gtest/gtest.h>

#include <random>

using namespace trelvane;

TEST(Rnd, TopFiftyThreeBitsOfMt19937_64) {
  Rnd r(1);
  std::mt19937_64 g(1);
  for (int i = 0; i < 100; ++i) {
    double want = static_cast<double>(g() >> 11) / 9007199254740992.0;
    ASSERT_EQ(r(), want);
  }
}

TEST(Rnd, StaysInUnitInterval) {
  Rnd r(12345);
  for (int i = 0; i < 100000; ++i) {
    double v = r();
    ASSERT_GE(v, 0.0);
    ASSERT_LT(v, 1.0);
  }
}
