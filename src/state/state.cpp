// state.cpp -- construction and open event of the comparison state.
#include "state/state.h"

namespace trelvane {

ComparisonState::ComparisonState() { changegraph = true; }

void ComparisonState::open() {
  askclose = false;
  running = false;
  nbbases = 0;
  for (int s = 0; s < 5; ++s)
    for (int l = 0; l < 5; ++l) matrice[s][l] = 0.0f;
  for (int b = 1; b <= 4; ++b) matrice[b][b] = 1.0f;
  for (auto& c : cara) c.clear();
  m0 = MemoryBlock(0);
  changegraph = true;
}

}  // namespace trelvane
