// row_kernels.h -- the row kernels written once, over the lane operations of an instruction set.
#pragma once

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "engine/kernels/scan_kernels.h"

// Each variant's file defines its lane operations (an Ops struct, below) and
// instantiates RowKernels<Ops> with them, compiled with that instruction
// set's flags alone. Everything here but the variants' tables lies in an
// unnamed namespace, the including file's own, so that no copy built for one
// set can stand in for another at link time.
//
// What an Ops struct gives:
//   Score             the type of a score (float, int16_t or uint8_t)
//   Vec               kLanes scores, of kLanes successive starts
//   kLanes            a power of two, at most kScanBlock / 2
//   kBlockLanes       the lanes a block's greatest scores take in blockmax
//                     (lane x holds the greatest of the lanes x modulo
//                     kBlockLanes); divides kLanes, at most kBlockMaxBytes
//                     bytes
//   splat(x)          every lane x
//   edgeLane(x)       lane 0 x, the others -infinity
//   load(p)           the lanes from p, where p is the column or the row of
//                     a group of starts from a multiple of kLanes: on the
//                     boundaries that ScoreRow and ScanColumns give it
//   loadAny(p)        the lanes from any p
//   loadFirst(p, n)   (optional) the n < kLanes scores from p, the other
//                     lanes not a number (integers: the lowest value, whose
//                     bits the kernels drop); without it, the starts past
//                     the last whole vector of a match are taken one by one
//   store(p, v)       v to p, on the boundaries of load
//   storeBlock(p, v)  the greatest scores of a block (the lanes of v folded
//                     to kBlockLanes) to blockmax at p
//   add, sub          lane by lane, each rounded to Single (integers: modulo
//                     their width, exact where the true result is in range)
//   max(s, acc)       the greater of each lane: acc's where s is not a number,
//                     so that such a score is never the greatest
//   greatest(v)       the greatest lane of v, which holds no not-a-number
//   prevLoad(prev, j) the word of prev at j (j a multiple of kLanes), in the
//                     form that shiftIn takes: the lanes from j, or their
//                     place where a load one start back costs less
//   shiftIn(up, low)  prev[j - 1 .. j + kLanes - 2] from prevLoad(prev, j)
//                     and prevLoad(prev, j - kLanes): the previous row's
//                     lanes one start on, lane 0 from the lower word
//   atLeast(v, l)     the lanes v >= l as bits, false for a not-a-number
//   equal(v, m)       the lanes v == m as bits, false for a not-a-number
// FloatLanes below gives Score to kBlockLanes, splat, the loads and stores,
// add and sub for Single scores; a lane set of integers is an Ops of its own
// (scan_*_int.cpp), and the algorithm the same.
namespace trelvane::kernels {

namespace {

// lanes Singles: float, or the compiler's vector of them (the type of
// __m128, __m256 and __m512, with which it converts freely), on which + and
// - work lane by lane.
template <int lanes>
struct FloatVector {
  typedef float type __attribute__((vector_size(4 * lanes), may_alias));
};
template <>
struct FloatVector<1> {
  using type = float;
};

// What every lane set of Single scores shares, written once. A lane set's
// Ops derives from it, adds the rest, and replaces what its instruction set
// does better.
template <int lanes, int blockLanes>
struct FloatLanes {
  using Score = float;
  using Vec = typename FloatVector<lanes>::type;
  static constexpr int kLanes = lanes;
  static constexpr int kBlockLanes = blockLanes;

  // x - 0 is x for every x, -0 and not-a-number too: a broadcast.
  static Vec splat(float x) { return x - Vec{}; }
  static Vec loadAny(const float* p) {
    Vec v;
    std::memcpy(&v, p, sizeof v);
    return v;
  }
  static Vec load(const float* p) { return loadAny(p); }
  static void store(float* p, Vec v) { std::memcpy(p, &v, sizeof v); }
  static void storeBlock(float* p, Vec v)
    requires(lanes == blockLanes)
  {
    store(p, v);
  }
  static Vec add(Vec a, Vec b) { return a + b; }
  static Vec sub(Vec a, Vec b) { return a - b; }
};

// Whether an Ops struct tells the blocks of a vector that reach a bound at
// once: blocksAtLeast(v, l), bit x for the lanes of block x of v (kBlockLanes
// lanes each), set where any of them is at least l.
template <class Ops>
concept BlockBits = requires(typename Ops::Vec v) { Ops::blocksAtLeast(v, v); };

// Whether an Ops struct loads part of a vector.
template <class Ops>
concept PartialLoads = requires(const typename Ops::Score* p) { Ops::loadFirst(p, int64_t{1}); };

// pattern, every `period` bits of a word.
constexpr uint64_t repeated(uint64_t pattern, int period) {
  uint64_t m = 0;
  for (int at = 0; at < 64; at += period) m |= pattern << at;
  return m;
}

// Bits one every kApart packed side by side: runs of kWidth bits, joined in
// pairs until one run is left.
template <int kApart, int kWidth = 1>
inline uint64_t packed(uint64_t bits) {
  if constexpr (kApart * kWidth >= 64) {
    return bits;
  } else {
    constexpr uint64_t kKeep = repeated((uint64_t{1} << (2 * kWidth)) - 1, 2 * kApart * kWidth);
    return packed<kApart, 2 * kWidth>((bits | bits >> (kApart * kWidth - kWidth)) & kKeep);
  }
}

// One bit a block, side by side, from the lanes of successive blocks
// (kBlockLanes bits each): whether any of the block's lanes is set.
template <int kBlockLanes>
inline uint64_t anyLaneOfBlocks(uint64_t lanes) {
  if constexpr (kBlockLanes == 1) {
    return lanes;
  } else {
    // each block's lanes folded onto its lowest one
    for (int s = kBlockLanes / 2; s >= 1; s /= 2) lanes |= lanes >> s;
    constexpr uint64_t kLowest = repeated(1, kBlockLanes);
    lanes &= kLowest;
    // eight blocks: their bits gathered in the top byte of one product
    if constexpr (kBlockLanes == 8) return (lanes * 0x0102040810204080ULL) >> 56;
    else return packed<kBlockLanes>(lanes);
  }
}

// The masks of n words, each already at its shift, joined in a tree instead
// of one long chain.
template <int n>
[[gnu::always_inline]] inline uint64_t joined(const uint64_t* m) {
  if constexpr (n == 1) return m[0];
  else return joined<n / 2>(m) | joined<n / 2>(m + n / 2);
}

template <class Ops>
struct RowKernels {
  using Score = typename Ops::Score;
  using Vec = typename Ops::Vec;
  static constexpr int64_t L = Ops::kLanes;
  static constexpr int64_t BL = Ops::kBlockLanes;
  // no score: -infinity (or the lowest value of an integer lane)
  static constexpr Score kNone = std::numeric_limits<Score>::has_infinity ? -std::numeric_limits<Score>::infinity()
                                                                          : std::numeric_limits<Score>::lowest();
  // Whole numbers: the two columns of a step come as one, their difference
  // (see ScanColumns), the sum exact in any order.
  static constexpr bool kPaired = !std::is_floating_point_v<Score>;
  static_assert(L >= 1 && (L & (L - 1)) == 0 && kScanBlock % (2 * L) == 0);
  static_assert(L % BL == 0 && BL * static_cast<int64_t>(sizeof(Score)) <= kBlockMaxBytes && kMatchSpan % L == 0 &&
                64 % BL == 0);
  static_assert(PartialLoads<Ops> || BL == L, "a vector of several blocks needs part loads for the last");

  // -- cell by cell: the starts that no whole vector covers --

  // next[j] = (prev[j-1] - leave[j-1]) + enter[j], rounded to Single after
  // each operation (paired: prev[j-1] + leave[j]); best becomes the greater of itself and the new score.
  [[gnu::always_inline]] static void stepCells(const Score* prev, Score* next, int64_t lo, int64_t hi,
                                               const Score* leave, const Score* enter, Score& best) {
    for (int64_t j = lo; j <= hi; ++j) {
      Score s;
      if constexpr (kPaired) {
        s = static_cast<Score>(prev[j - 1] + leave[j]);
      } else {
        s = prev[j - 1] - leave[j - 1];
        s = s + enter[j];
      }
      next[j] = s;
      best = s > best ? s : best;
    }
  }

  // The tie and listing bits of the starts lo + k for k from `from` to count - 1.
  [[gnu::always_inline]] static void matchCells(const Score* row, int64_t lo, int64_t from, int64_t count,
                                                Score maxscore, Score threshold, uint64_t& ties, uint64_t& listed) {
    for (int64_t k = from; k < count; ++k) {
      ties |= static_cast<uint64_t>(row[lo + k] == maxscore) << k;
      listed |= static_cast<uint64_t>(threshold <= row[lo + k]) << k;
    }
  }

  // -- the step of a row --

  // Starts j0 to j0 + L - 1, j0 a multiple of L, from shifted =
  // prev[j0-1 .. j0+L-2]: leave[j0-1 ..] holds the cells of the leaving
  // base, enter[j0 ..] those of the entering one (paired: leave[j0 ..] their
  // differences).
  [[gnu::always_inline]] static Vec step(Vec shifted, Score* next, const Score* leave, const Score* enter,
                                         int64_t j0) {
    Vec s;
    if constexpr (kPaired) s = Ops::add(shifted, Ops::load(leave + j0));
    else s = Ops::add(Ops::sub(shifted, Ops::load(leave + j0 - 1)), Ops::load(enter + j0));
    Ops::store(next + j0, s);
    return s;
  }

  // A whole block from j0 (a multiple of kScanBlock, never 0): the greatest
  // score of each lane. max(s, acc) keeps acc where s is not a number. Two
  // maxima, so that the next max need not wait for the one before; each
  // word of prev is loaded once, for its own group and the next.
  [[gnu::always_inline]] static Vec wholeBlock(const Score* prev, Score* next, const Score* leave,
                                               const Score* enter, int64_t j0) {
    auto lower = Ops::prevLoad(prev, j0 - L);
    Vec acc = Ops::splat(kNone), acc2 = acc;
    for (int64_t j = j0; j < j0 + kScanBlock; j += 2 * L) {
      const auto upper = Ops::prevLoad(prev, j), upper2 = Ops::prevLoad(prev, j + L);
      acc = Ops::max(step(Ops::shiftIn(upper, lower), next, leave, enter, j), acc);
      acc2 = Ops::max(step(Ops::shiftIn(upper2, upper), next, leave, enter, j + L), acc2);
      lower = upper2;
    }
    return Ops::max(acc, acc2);
  }

  // The starts j to j + L - 1 from any j, out of the groups' places (integer
  // lanes: no rounding, so a start computed twice gets the same score).
  [[gnu::always_inline]] static Vec stepAnywhere(const Score* prev, Score* next, const Score* pair, int64_t j) {
    const Vec s = Ops::add(Ops::loadAny(prev + j - 1), Ops::loadAny(pair + j));
    Ops::store(next + j, s);
    return s;
  }

  // The starts lo to hi of a block cut at either end (block 0 starts at 1;
  // the last ends at lastshort): the starts outside whole groups one by one,
  // their greatest score in lane 0. Integer lanes take them as a whole
  // vector that overlaps the group after them (before them), where the row
  // has L starts: one vector instead of up to L - 1 cells one by one, at
  // both ends of every row.
  static Vec partOfBlock(const Score* prev, Score* next, int64_t lo, int64_t hi, const Score* leave,
                         const Score* enter) {
    Score edge = kNone;
    Vec acc = Ops::splat(kNone);
    const int64_t firstGroup = (lo + L - 1) & ~(L - 1);
    int64_t j = firstGroup;
    bool headDone = false;
    if constexpr (kPaired) {
      if (lo < firstGroup && lo + L - 1 <= hi) {
        acc = stepAnywhere(prev, next, leave, lo);
        headDone = true;
      }
    }
    if (!headDone) stepCells(prev, next, lo, std::min(firstGroup - 1, hi), leave, enter, edge);
    for (; j + L - 1 <= hi; j += L)
      acc = Ops::max(step(Ops::shiftIn(Ops::prevLoad(prev, j), Ops::prevLoad(prev, j - L)), next, leave, enter, j),
                     acc);
    if constexpr (kPaired) {
      if (j <= hi && hi - L + 1 >= lo) {
        acc = Ops::max(stepAnywhere(prev, next, leave, hi - L + 1), acc);
        j = hi + 1;
      }
    }
    stepCells(prev, next, j, hi, leave, enter, edge);
    return Ops::max(acc, Ops::edgeLane(edge));
  }

  // See AdvanceSpanFn. Whole blocks take the straight path; a block cut at
  // either end, the general one.
  static Score advanceSpan(const Score* prev, Score* next, int64_t lo, int64_t hi, const Score* leave,
                           const Score* enter, Score* blockmax) {
    return blockmax ? advanceSpanOf<true>(prev, next, lo, hi, leave, enter, blockmax)
                    : advanceSpanOf<false>(prev, next, lo, hi, leave, enter, blockmax);
  }
  // kBlocks: each block's greatest scores folded into blockmax; without, the
  // span's greatest alone (the fold and its store were a fifth of the work
  // of a whole block in byte lanes).
  template <bool kBlocks>
  static Score advanceSpanOf(const Score* prev, Score* next, int64_t lo, int64_t hi, const Score* leave,
                             const Score* enter, Score* blockmax) {
    Vec span = Ops::splat(kNone);
    auto done = [&](int64_t b, Vec acc) {
      if constexpr (kBlocks) Ops::storeBlock(blockmax + b * BL, acc);
      span = Ops::max(acc, span);
    };
    int64_t b = lo / kScanBlock;
    if (b == 0 || lo != b * kScanBlock) {
      done(b, partOfBlock(prev, next, lo, std::min((b + 1) * kScanBlock - 1, hi), leave, enter));
      ++b;
    }
    for (const int64_t wholeEnd = (hi + 1) / kScanBlock; b < wholeEnd; ++b)
      done(b, wholeBlock(prev, next, leave, enter, b * kScanBlock));
    if (b * kScanBlock <= hi) done(b, partOfBlock(prev, next, b * kScanBlock, hi, leave, enter));
    return Ops::greatest(span);
  }

  // -- the tests of a row --

  // The lanes from p, n of them (at most L): the others not a number.
  [[gnu::always_inline]] static Vec loadUpTo(const Score* p, int64_t n) {
    if constexpr (PartialLoads<Ops>) {
      if (n < L) return Ops::loadFirst(p, n);
    }
    return Ops::loadAny(p);
  }
  // The bits of the first n lanes (at most L) of a compare: those past a
  // part load hold no score.
  [[gnu::always_inline]] static uint64_t firstLanes(uint64_t bits, int64_t n) {
    return n < 64 ? bits & ((uint64_t{1} << n) - 1) : bits;
  }

  // See BlocksMaxFn: the greatest of the blocks' lanes, two vectors side by
  // side (blockmax holds no not-a-number).
  static Score blocksMax(const Score* blockmax, int64_t blocks) {
    const int64_t n = blocks * BL;
    Vec a = Ops::splat(kNone), a2 = a;
    int64_t k = 0;
    for (; k + 2 * L <= n; k += 2 * L) {
      a = Ops::max(Ops::loadAny(blockmax + k), a);
      a2 = Ops::max(Ops::loadAny(blockmax + k + L), a2);
    }
    for (; k < n; k += L) a = Ops::max(loadUpTo(blockmax + k, n - k), a);
    return Ops::greatest(Ops::max(a, a2));
  }

  // See BlockCandidatesFn. The 64 blocks of a word go 64 / BL at a time
  // (BL times): their lanes reaching lower fill one word (ordered: false for
  // a not-a-number; -infinity stands for none), which then gives one bit a
  // block.
  static void blockCandidates(const Score* blockmax, int64_t blocks, Score lower, uint64_t* bits) {
    constexpr int64_t kBlocksAWord = 64 / BL;
    const Vec l = Ops::splat(lower);
    if constexpr (BlockBits<Ops>) {
      // a vector of whole blocks gives its bits at once
      constexpr int64_t kBlocksAVector = L / BL;
      for (int64_t w = 0; w * 64 < blocks; ++w) {
        const int64_t end = std::min(blocks, w * 64 + 64);
        uint64_t word = 0;
        for (int64_t b = w * 64; b < end; b += kBlocksAVector) {
          uint64_t found;
          if (end - b < kBlocksAVector && blocks >= kBlocksAVector) {
            // The last blocks: the whole vector that ends with them, less
            // the blocks before them, already told (a part load waits on
            // the stores that build it).
            const int64_t before = kBlocksAVector - (end - b);
            found = static_cast<uint64_t>(Ops::blocksAtLeast(Ops::loadAny(blockmax + (b - before) * BL), l)) >> before;
          } else {
            found = static_cast<uint64_t>(Ops::blocksAtLeast(loadUpTo(blockmax + b * BL, (end - b) * BL), l));
          }
          word |= found << (b % 64);
        }
        bits[w] = firstLanes(word, end - w * 64);
      }
      return;
    }
    for (int64_t w = 0; w * 64 < blocks; ++w) {
      const int64_t end = std::min(blocks, w * 64 + 64);
      uint64_t word = 0;  // built in a register and stored once
      for (int64_t c = 0, b = w * 64; c < BL && b < end; ++c, b += kBlocksAWord) {
        const Score* p = blockmax + b * BL;
        const int64_t n = std::min(kBlocksAWord, end - b) * BL;
        uint64_t lanes = 0;
        for (int64_t k = 0; k < n; k += L)
          lanes |= firstLanes(static_cast<uint64_t>(Ops::atLeast(loadUpTo(p + k, n - k), l)), n - k) << k;
        word |= anyLaneOfBlocks<BL>(lanes) << (b % 64);
      }
      bits[w] = word;
    }
  }

  // See BlockMatchFn: a span of kMatchSpan starts at a time.
  static void blockMatch(const Score* row, int64_t lo, int64_t count, Score maxscore, Score threshold,
                         uint64_t* ties, uint64_t* listed) {
    const Vec m = Ops::splat(maxscore), th = Ops::splat(threshold);
    for (int64_t w = 0; w * kMatchSpan < count; ++w)
      spanMatch(row, lo + w * kMatchSpan, std::min(kMatchSpan, count - w * kMatchSpan), maxscore, threshold, m, th,
                ties + w, listed + w);
  }

  // The starts lo to lo + count - 1, count at most kMatchSpan. Ordered
  // comparisons: false where either side is not a number.
  [[gnu::always_inline]] static void spanMatch(const Score* row, int64_t lo, int64_t count, Score maxscore,
                                               Score threshold, Vec m, Vec th, uint64_t* ties, uint64_t* listed) {
    constexpr int kWords = kMatchSpan / L;
    if constexpr (kWords <= 8) {
      if (count == kMatchSpan) {
        // A whole span of a few words, the usual case: their shifts known,
        // so that the masks come together in a tree. (Of 16 words, with
        // SSE2, the loop below is faster: 3.1 us against 3.7 us for the
        // spans of 10,000 starts, BM_KernelTests on Zen 3.)
        uint64_t tw[kWords], lw[kWords];
        for (int v = 0; v < kWords; ++v) {
          const Vec s = Ops::loadAny(row + lo + v * L);  // the scores of starts lo + v * L ..
          tw[v] = static_cast<uint64_t>(Ops::equal(s, m)) << (v * L);
          lw[v] = static_cast<uint64_t>(Ops::atLeast(s, th)) << (v * L);
        }
        *ties = joined<kWords>(tw);
        *listed = joined<kWords>(lw);
        return;
      }
    }
    uint64_t t = 0, l = 0;
    int64_t k = 0;
    for (; k + L <= count; k += L) {
      const Vec s = Ops::loadAny(row + lo + k);
      t |= static_cast<uint64_t>(Ops::equal(s, m)) << k;
      l |= static_cast<uint64_t>(Ops::atLeast(s, th)) << k;
    }
    if constexpr (PartialLoads<Ops>) {
      if (k < count) {
        // the last starts alone: the lanes past them are not a number
        const Vec s = Ops::loadFirst(row + lo + k, count - k);
        t |= firstLanes(static_cast<uint64_t>(Ops::equal(s, m)), count - k) << k;
        l |= firstLanes(static_cast<uint64_t>(Ops::atLeast(s, th)), count - k) << k;
      }
    } else {
      matchCells(row, lo, k, count, maxscore, threshold, t, l);
    }
    *ties = t;
    *listed = l;
  }
};

// Whether an Ops struct runs steps in striped rows (integer lanes):
//   shiftUp(v, below)  lane 0 the last lane of below, lane x lane x - 1 of v
//   min(a, b)          the lesser of each lane
template <class Ops>
concept StripedLanes = requires(typename Ops::Vec v) {
  { Ops::shiftUp(v, v) } -> std::same_as<typename Ops::Vec>;
  { Ops::min(v, v) } -> std::same_as<typename Ops::Vec>;
};

// See AdvanceStripedFn. A group's vectors stay in registers through every
// step; each step reads one vector of its pair column a vector of the group,
// and the only lane shift is that of the group's top vector.
template <class Ops>
  requires StripedLanes<Ops>
struct StripedKernels {
  using Score = typename Ops::Score;
  using Vec = typename Ops::Vec;
  static constexpr int R = kStripeVectors;
  static constexpr int64_t L = Ops::kLanes;
  static constexpr int64_t kGroup = R * L;
  static constexpr Score kNone = RowKernels<Ops>::kNone;
  static_assert(R == 8, "greatestOf folds eight vectors");

  static void advance(Score* row, int64_t groups, int n, const Score* const* pair, const Score* clip,
                      const Score* start0, Score* best) {
    // below[k]: the vector whose last lane is the start below the group
    // before step k, group 0's start 0 in every lane
    Vec acc[kMostStripedSteps], below[kMostStripedSteps];
    for (int k = 0; k < n; ++k) {
      acc[k] = Ops::splat(kNone);
      below[k] = Ops::splat(start0[k]);
    }
    for (int64_t g = 0; g < groups; ++g) {
      Score* at = row + g * kGroup;
      Vec s[R];
      for (int v = 0; v < R; ++v) s[v] = Ops::load(at + v * L);
      if (g + 1 < groups) steps<false>(s, g * kGroup, n, pair, clip, below, acc);
      else steps<true>(s, g * kGroup, n, pair, clip, below, acc);
      // after n steps register q holds vector (q + n) modulo R
      for (int q = 0; q < R; ++q) Ops::store(at + (q + n) % R * L, s[q]);
    }
    for (int k = 0; k < n; ++k) best[k] = Ops::greatest(acc[k]);
  }

  // The n steps of the group at `at`, register q holding vector q at first.
  // Each vector takes the one below it, and the step adds in place: the
  // register of vector v becomes that of v + 1, and the top vector's, shifted
  // one lane, that of vector 0. R steps bring every vector back to its
  // register; they are written out so that no register moves. On entry
  // below[k] holds the start below the group before step k in its last
  // lane; on return, the group's top vector before step k, for the group
  // above.
  template <bool kLast>
  [[gnu::always_inline]] static void steps(Vec (&s)[R], int64_t at, int n, const Score* const* pair,
                                           const Score* clip, Vec* below, Vec* acc) {
    int k = 0;
    for (; k + R <= n; k += R) round<kLast>(s, k, R, at, pair, clip, below, acc, std::make_integer_sequence<int, R>{});
    round<kLast>(s, k, n - k, at, pair, clip, below, acc, std::make_integer_sequence<int, R - 1>{});
  }

  // Steps k to k + count - 1 of a round (count at most R).
  template <bool kLast, int... t>
  [[gnu::always_inline]] static void round(Vec (&s)[R], int k, int count, int64_t at, const Score* const* pair,
                                           const Score* clip, Vec* below, Vec* acc, std::integer_sequence<int, t...>) {
    ((t < count ? step<t, kLast>(s, k + t, pair[k + t] + at, clip, below, acc) : void()), ...);
  }

  // Step k, the t-th of a round: register q holds vector (q + t) % R.
  template <int t, bool kLast>
  [[gnu::always_inline]] static void step(Vec (&s)[R], int k, const Score* p, const Score* clip, Vec* below,
                                          Vec* acc) {
    constexpr int kTop = (2 * R - 1 - t) % R;  // the register of vector R - 1
    const Vec low = Ops::shiftUp(s[kTop], below[k]);
    below[k] = s[kTop];
    addColumn<t, kTop>(s, low, p, std::make_integer_sequence<int, R>{});
    acc[k] = Ops::max(greatestOf<t + 1, kLast>(s, clip), acc[k]);
  }
  template <int t, int kTop, int... q>
  [[gnu::always_inline]] static void addColumn(Vec (&s)[R], Vec low, const Score* p, std::integer_sequence<int, q...>) {
    ((s[q] = Ops::add(q == kTop ? low : s[q], Ops::load(p + (q + t + 1) % R * L))), ...);
  }

  // The lanes' greatest of the group's vectors, register q holding vector
  // (q + t) % R, in a tree so that the maxima need not wait on each other
  // (the last group: clipped first).
  template <int t, bool kLast>
  [[gnu::always_inline]] static Vec greatestOf(const Vec (&s)[R], const Score* clip) {
    auto c = [&](int q) {
      if constexpr (kLast) return Ops::min(s[q], Ops::load(clip + (q + t) % R * L));
      else return s[q];
    };
    return Ops::max(Ops::max(Ops::max(c(0), c(1)), Ops::max(c(2), c(3))),
                    Ops::max(Ops::max(c(4), c(5)), Ops::max(c(6), c(7))));
  }
};

// The table's untyped kernels over RowKernels<Ops>, and the Single bounds
// of the scans turned into the lanes' terms.
template <class Ops>
struct UntypedKernels {
  using K = RowKernels<Ops>;
  using Score = typename Ops::Score;
  static constexpr bool kInteger = !std::is_floating_point_v<Score>;
  static constexpr Score kMost = std::numeric_limits<Score>::max();
  static constexpr Score kLeast = std::numeric_limits<Score>::lowest();

  static const Score* in(const void* p) { return static_cast<const Score*>(p); }
  static Score* in(void* p) { return static_cast<Score*>(p); }
  // A greatest score as a Single: signed lanes' lowest value stands for none.
  static float single(Score v) {
    if constexpr (kInteger && std::is_signed_v<Score>) {
      if (v == kLeast) return -std::numeric_limits<float>::infinity();
    }
    return static_cast<float>(v);
  }
  // The least lane value at least x, where one is (a score of these lanes is
  // at least x exactly when it is at least that value); false where none is
  // (x above every lane value, or not a number).
  static bool atLeastBound(float x, Score& bound) {
    if constexpr (!kInteger) {
      bound = x;
      return true;
    } else {
      if (!(x <= static_cast<float>(kMost))) return false;
      const float whole = std::ceil(x);
      bound = whole <= static_cast<float>(kLeast) ? kLeast : static_cast<Score>(whole);
      return true;
    }
  }
  // x as a lane value, where it is one (else no score equals it).
  static bool exactly(float x, Score& v) {
    if constexpr (!kInteger) {
      v = x;
      return true;
    } else {
      if (!(x >= static_cast<float>(kLeast) && x <= static_cast<float>(kMost)) || std::floor(x) != x) return false;
      v = static_cast<Score>(x);
      return true;
    }
  }

  static float advanceSpan(const void* prev, void* next, int64_t lo, int64_t hi, const void* leave,
                           const void* enter, void* blockmax) {
    return single(K::advanceSpan(in(prev), in(next), lo, hi, in(leave), in(enter), in(blockmax)));
  }
  static float blocksMax(const void* blockmax, int64_t blocks) { return single(K::blocksMax(in(blockmax), blocks)); }
  static void blockCandidates(const void* blockmax, int64_t blocks, float lower, uint64_t* bits) {
    Score bound;
    if (atLeastBound(lower, bound)) {
      K::blockCandidates(in(blockmax), blocks, bound, bits);
      return;
    }
    for (int64_t w = 0; w * 64 < blocks; ++w) bits[w] = 0;
  }
  static void blockMatch(const void* row, int64_t lo, int64_t count, float maxscore, float threshold,
                         uint64_t* ties, uint64_t* listed) {
    Score m = kMost, th = kMost;
    const bool tieable = exactly(maxscore, m), listable = atLeastBound(threshold, th);
    K::blockMatch(in(row), lo, count, m, th, ties, listed);
    for (int64_t w = 0; w * kMatchSpan < count; ++w) {
      if (!tieable) ties[w] = 0;
      if (!listable) listed[w] = 0;
    }
  }
  static void putScores(const float* scores, int64_t n, void* row) {
    for (int64_t j = 0; j < n; ++j) in(row)[j] = static_cast<Score>(scores[j]);
  }
  static float scoreAt(const void* row, int64_t j) { return static_cast<float>(in(row)[j]); }
  static void advanceStriped(void* row, int64_t groups, int n, const void* const* pair, const void* clip,
                             const void* start0, float* best) {
    Score b[kMostStripedSteps];
    StripedKernels<Ops>::advance(in(row), groups, n, reinterpret_cast<const Score* const*>(pair), in(clip),
                                 in(start0), b);
    for (int k = 0; k < n; ++k) best[k] = single(b[k]);
  }
  static constexpr AdvanceStripedFn stripedOrNull() {
    if constexpr (StripedLanes<Ops>) return &advanceStriped;
    else return nullptr;
  }
};

// The table of a variant's kernels (start scores of byte lanes where given).
template <class Ops>
constexpr ScanKernel kernelTable(const char* name, const char* family, ScoreLanes scores,
                                 StartScoresFn startScores = nullptr) {
  using U = UntypedKernels<Ops>;
  return {name,          family,        scores,         Ops::kLanes,         Ops::kBlockLanes,
          sizeof(typename Ops::Score), &U::advanceSpan, &U::blocksMax, &U::blockCandidates, &U::blockMatch,
          &U::putScores, &U::scoreAt,   startScores,        U::stripedOrNull()};
}

}  // namespace

// The variants, each defined in a file of its own with its own flags.
extern const ScanKernel kGenericKernel, kGenericU8Kernel, kGenericI16Kernel;
#if defined(__x86_64__)
extern const ScanKernel kSse2Kernel;
extern const ScanKernel kAvx2Kernel, kAvx2U8Kernel, kAvx2I16Kernel;
extern const ScanKernel kAvx512Kernel, kAvx512U8Kernel, kAvx512I16Kernel;
#endif

}  // namespace trelvane::kernels
