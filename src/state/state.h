// state.h -- the comparison state of one window: sequences, matrix, results.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "platform/memoryblock.h"
#include "state/origin.h"

namespace trelvane {

namespace plots { struct Picture; }

// Base codes, in the order of every list of bases in the system.
enum BaseCode : uint8_t { kN = 0, kA = 1, kT = 2, kC = 3, kG = 4 };
inline constexpr char kLetters[5] = {'N', 'A', 'T', 'C', 'G'};

// The properties of Window1 that make up one comparison. The readers, the
// model estimation, the engine and the drawing all work on this directly.
struct ComparisonState {
  ComparisonState();

  // Window1's open event: identity matrix, empty cara, empty m0, flags reset.
  void open();

  // f[0] longest, f[1] shortest: the path of the chosen file, or none.
  std::array<std::optional<std::string>, 2> f;
  std::atomic<bool> askclose{false};
  std::atomic<bool> running{false};
  std::shared_ptr<plots::Picture> pct;  // the last drawn profile, nil before
  float maxgraph = 0;
  int32_t windgraph = 0;
  MemoryBlock m2;  // nil until a run or a stored result
  float meangraph = 0;
  float sdgraph = 0;
  int32_t nbbases = 0;
  float sumu2up = 0;
  float sumu2bas = 0;
  MemoryBlock m0;
  int32_t nbbases1 = 0;
  MemoryBlock m1;
  float osdgraph = 0;
  float omaxgraph = 0;
  float omeangraph = 0;
  // matrice[shortest base][longest base]; row 0 and column 0 stay 0.
  float matrice[5][5] = {};
  // basesfreq[code][0 longest, 1 shortest]
  int32_t basesfreq[5][2] = {};
  std::array<std::string, 257> cara;
  bool changegraph = true;
  // Where m0 and m1 came from; set by the readers, kept by runs, restored
  // from a result file where it holds one.
  std::array<SequenceOrigin, 2> origin;
};

}  // namespace trelvane
