// listing_estimate.cpp -- the expected size of the alignment listing, from the matrix and the bases' shares.
#include "engine/listing_estimate.h"

#include <algorithm>
#include <cmath>

#include "platform/numtext.h"

namespace trelvane {

namespace {

// The shares of A, T, C, G (codes 1 to 4) of one side, Ns left out.
void baseShares(const ComparisonState& st, int side, double (&p)[5]) {
  double bases = 0;
  for (int b = 1; b <= 4; ++b) bases += st.basesfreq[b][side];
  p[0] = 0;
  for (int b = 1; b <= 4; ++b) p[b] = bases > 0 ? st.basesfreq[b][side] / bases : 0;
}

}  // namespace

ListingEstimate estimateListing(const ComparisonState& st, const RunSettings& s) {
  ListingEstimate e;
  const int64_t nlong = st.nbbases, nshort = st.nbbases1;
  // the window and the range as the run takes them
  int64_t W = std::max(0, toInt(Val(s.EFWS)));
  if (nlong < W || nshort < W) W = std::min(nlong, nshort);
  e.W = static_cast<int32_t>(W);
  e.threshold = CDbl(s.EFIdentities);
  const int64_t lastlong = nlong - W;
  const int64_t firstpos = std::max<int64_t>(toInt(Val(s.EFAnaFrom) - 1.0), 0);
  const double to = Val(s.EFAnaTo);
  const int64_t lastpos =
      equalsNoCase(s.EFAnaTo, "max") || to > static_cast<double>(lastlong) ? lastlong : toInt(to);
  const int64_t positions = lastpos - firstpos + 1, starts = nshort - W + 1;
  if (W <= 0 || positions <= 0 || starts <= 0) return e;
  e.pairs = static_cast<double>(positions) * static_cast<double>(starts);

  // one cell: its mean and variance over random bases of either side
  double pl[5], ps[5];
  baseShares(st, 0, pl);
  baseShares(st, 1, ps);
  double mean = 0, square = 0;
  for (int a = 1; a <= 4; ++a)
    for (int b = 1; b <= 4; ++b) {
      const double cell = st.matrice[b][a];  // [shortest][longest]
      if (std::isnan(cell)) continue;
      mean += ps[b] * pl[a] * cell;
      square += ps[b] * pl[a] * cell * cell;
    }
  const double variance = std::max(0.0, square - mean * mean);
  e.randomScore = mean * static_cast<double>(W);
  const double sd = std::sqrt(variance * static_cast<double>(W));
  if (sd > 0)
    e.share = 0.5 * std::erfc((e.threshold - e.randomScore) / (sd * std::sqrt(2.0)));
  else
    e.share = e.threshold <= e.randomScore ? 1.0 : 0.0;
  // an alignment: two positions, three lines of W letters, five line ends
  e.bytes = e.pairs * e.share * (3.0 * static_cast<double>(W) + 16.0);
  return e;
}

}  // namespace trelvane
