// rnd.cpp -- the clock seed of Rnd.
#include "platform/rnd.h"

#include <chrono>

namespace trelvane {

uint64_t Rnd::clockSeed() {
  return static_cast<uint64_t>(std::chrono::high_resolution_clock::now().time_since_epoch().count());
}

}  // namespace trelvane
