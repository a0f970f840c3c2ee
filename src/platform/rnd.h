// rnd.h -- Rnd, the uniform random Double in [0, 1) of a run.
#pragma once

#include <cstdint>
#include <random>

namespace trelvane {

// One std::mt19937_64 per run. The value is built from the top 53 bits of
// one draw, never through std::uniform_real_distribution, so that a seeded
// run gives the same bytes with every standard library.
class Rnd {
 public:
  explicit Rnd(uint64_t seed) : gen_(seed) {}
  static uint64_t clockSeed();

  double operator()() { return static_cast<double>(gen_() >> 11) * 0x1p-53; }

 private:
  std::mt19937_64 gen_;
};

}  // namespace trelvane
