// listing_estimate.h -- how much of a run's alignment listing to expect before the run, from the bases' shares.
#pragma once

#include <cstdint>

#include "engine/run.h"
#include "state/state.h"

namespace trelvane {

// What the listing of a substitution run would hold if the two sequences
// were random with their own base shares: the window pairs it tests, the
// score a pair has on average, the share of pairs at or above the listing's
// threshold (a normal law of the window's W cells) and the bytes they take.
struct ListingEstimate {
  int32_t W = 0;           // the window size as the run clamps it
  double pairs = 0;        // window pairs tested over the analysis range
  double randomScore = 0;  // the mean score of a random pair
  double threshold = 0;    // EFIdentities
  double share = 0;        // of the pairs, those listed
  double bytes = 0;        // the listing's text

  // The threshold is at or below what a random pair scores: most pairs are listed.
  bool mostPairs() const { return pairs > 0 && threshold <= randomScore; }
};

ListingEstimate estimateListing(const ComparisonState& st, const RunSettings& s);

}  // namespace trelvane
