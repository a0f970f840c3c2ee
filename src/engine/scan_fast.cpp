// scan_fast.cpp -- the substitution scan with a fast row kernel: the maximum first, ties and alignments after.
#include "engine/scan.h"
#include "platform/numtext.h"

namespace trelvane {

void substitutionScanColumns(RunContext& c) {
  const MemoryBlock& m0 = c.st.m0;
  const uint8_t* m1 = c.m1->data();
  const int32_t W = c.W;
  const int64_t lastshort = c.lastshort;
  const ScanColumns& cols = *c.columns;
  const ScanKernel& kernel = *c.kernel;
  float* scorerow = c.scorerow.data();
  const int64_t blocks = scanBlockCount(lastshort);
  std::vector<float> blockmax(static_cast<std::size_t>((blocks + 1) * kBlockMaxLanes));
  std::vector<uint64_t> candidates(static_cast<std::size_t>(blocks / 64 + 1));
  scoreFirstPosition(c);

  const int32_t span = wrap32(c.lastpos - c.firstpos);
  const int32_t total = wrap32(static_cast<int64_t>(span) + c.nresample);
  const int32_t progressstep = toInt(span / 100.0);
  int32_t counter = 0;
  for (int64_t i = c.firstpos + 1; i <= c.lastpos; ++i) {
    if (yieldAndTestStop(c, counter, progressstep, wrap32(i - c.firstpos), total)) break;

    c.tielist.clear();
    const uint8_t* win = c.window(m0, i, W + 1);
    const float* leave = cols.leave(m0.get(i - 1));
    const float* enter = cols.enter(m0.get(i + W - 1));
    if (hasN(win, W)) {
      // The row of scores is kept up to date across the N, untested.
      kernel.advanceMax(scorerow, lastshort, leave, enter);
      scorerow[0] = fullScoreFromFirst(m1, win, W, c.cells);
      nRow(c, i, win[0]);
      continue;
    }
    // The start of the diagonal first, so that its chain of additions
    // overlaps the row; it goes into the row after, which still needs the
    // previous position's scorerow[0].
    const float start = fullScoreFromFirst(m1, win, W, c.cells);
    float best = kernel.advanceBlocks(scorerow, lastshort, leave, enter, blockmax.data());
    scorerow[0] = start;

    // The tests of the scores, descending from lastshort to 1 and then j = 0,
    // leave maxscore at the greatest score when one is above 0, else at 0;
    // ties are then every start whose score equals it, in that order (a
    // not-a-number score equals nothing).
    float maxscore = 0.0f;
    if (best > maxscore) maxscore = best;
    if (scorerow[0] > maxscore) maxscore = scorerow[0];
    // A block is looked into when its best reaches maxscore or the
    // threshold, whichever is lower (a not-a-number threshold lists nothing).
    const float threshold = c.idthreshold;
    const float lower = threshold < maxscore ? threshold : maxscore;
    kernel.blockCandidates(blockmax.data(), blocks, lower, candidates.data());
    for (int64_t w = (blocks + 63) / 64 - 1; w >= 0; --w) {
      // the blocks of this word, descending
      for (uint64_t leftBlocks = candidates[static_cast<std::size_t>(w)]; leftBlocks != 0;) {
      const int64_t b = w * 64 + 63 - __builtin_clzll(leftBlocks);
      leftBlocks &= ~(uint64_t{1} << (b % 64));
      const int64_t blockLo = scanBlockLo(b), blockHi = scanBlockHi(b, lastshort);
      // the starts of the block, descending, kMatchSpan at a time
      for (int64_t hi = blockHi; hi >= blockLo; hi -= kMatchSpan) {
        const int64_t lo = hi - kMatchSpan + 1 > blockLo ? hi - kMatchSpan + 1 : blockLo;
        uint64_t ties = 0, listed = 0;
        kernel.blockMatch(scorerow, lo, hi - lo + 1, maxscore, threshold, &ties, &listed);
        for (uint64_t left = ties | listed; left != 0;) {
          const int k = 63 - __builtin_clzll(left);
          left &= ~(uint64_t{1} << k);
          if ((ties >> k) & 1) appendStart(c.tielist, lo + k);
          if ((listed >> k) & 1) listAlignment(c, lo + k, i, win);
        }
      }
      }
    }
    if (scorerow[0] == maxscore) appendStart(c.tielist, 0);
    if (threshold <= scorerow[0]) listAlignment(c, 0, i, win);
    scoredRow(c, i, win[0], maxscore);
  }
}

}  // namespace trelvane
