// score_lanes.cpp -- which lanes hold a run's window scores exactly, and the variant a run takes.
#include <algorithm>
#include <cmath>

#include "engine/kernels/scan_kernels.h"

namespace trelvane {

// A window score is a sum of W cells of matrice (a byte above 4 scores 0).
// Where every cell is a whole number (not -0, whose sums keep a sign that
// whole numbers lose) of magnitude at most m, every score and every partial
// sum of the recurrence is a whole number of magnitude at most W * m; with
// W * m within 16 signed bits it is also far within Single's 2^24, so each
// Single operation is exact and the recurrence gives the true sums, which
// integer lanes give too (modulo their width, where the true sum lies in
// their range). Non-negative cells with W times the greatest at most 255 keep
// every score in 0 to 255: one unsigned byte.
ScoreLanes exactScoreLanes(const float (&matrice)[5][5], int32_t W) {
  const int64_t w = std::max<int32_t>(W, 0);
  float most = 0.0f, greatest = 0.0f;
  bool negative = false;
  for (const auto& row : matrice)
    for (float cell : row) {
      if (!std::isfinite(cell) || std::floor(cell) != cell || (cell == 0.0f && std::signbit(cell)))
        return ScoreLanes::kFloat;
      negative = negative || cell < 0.0f;
      greatest = std::max(greatest, cell);
      most = std::max(most, std::fabs(cell));
    }
  // the cells are whole: at most 2^24 apart from here on, compared as doubles
  if (!negative && w * static_cast<double>(greatest) <= 255.0) return ScoreLanes::kUint8;
  if (w * static_cast<double>(most) <= 32767.0) return ScoreLanes::kInt16;
  return ScoreLanes::kFloat;
}

const ScanKernel& kernelForRun(std::string_view name, const float (&matrice)[5][5], int32_t W) {
  const ScanKernel* asked = findScanKernel(name);
  const bool automatic = !asked || name == "auto";
  if (!asked) asked = findScanKernel("auto");
  if (asked->isScalar() || (!automatic && asked->scores == ScoreLanes::kFloat)) return *asked;
  const ScoreLanes fits = exactScoreLanes(matrice, W);
  const ScoreLanes want = automatic ? fits : std::max(asked->scores, fits);
  for (const ScanKernel& k : scanKernels())
    if (std::string_view(k.family) == asked->family && k.scores == want) return k;
  // an instruction set without such lanes: its Single kernel
  for (const ScanKernel& k : scanKernels())
    if (std::string_view(k.family) == asked->family && k.scores == ScoreLanes::kFloat) return k;
  return *asked;
}

}  // namespace trelvane
