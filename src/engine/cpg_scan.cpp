// cpg_scan.cpp -- the CpG scan: CpG dinucleotides counted in the window at each position.
#include "state/profile.h"
#include "engine/scan.h"
#include "platform/numtext.h"

namespace trelvane {

namespace {

inline int32_t isCpG(const uint8_t* p) { return p[0] == kC && p[1] == kG ? 1 : 0; }

// The CpG count and the number of bytes 0 of the window at each position,
// slid along m0 by one pair and one byte at each step where the windows lie
// in m0 or its padding, counted anew elsewhere. The counts are small whole
// numbers, so the Single sum of the scan's 1.0 steps is the count itself (up
// to 2^24, beyond which the scan counts step by step).
class SlidingCounts {
 public:
  SlidingCounts(const MemoryBlock& m0, int32_t W) : m0_(m0), W_(W) {}
  static bool fits(int32_t W) { return W <= (1 << 24); }

  // win: the window at i, as RunContext::window gives it.
  void at(int64_t i, const uint8_t* win) {
    const bool inBlock = m0_.data() && i - 1 >= -MemoryBlock::kPad &&
                         i + W_ + 1 <= m0_.size() + MemoryBlock::kPad;
    if (inBlock && have_ && i == last_ + 1) {
      // window i-1 loses its first byte and pair, window i gains its last ones
      zeros_ += (win[W_ - 1] == 0 ? 1 : 0) - (win[-1] == 0 ? 1 : 0);
      cpg_ += isCpG(win + W_ - 1) - isCpG(win - 1);
    } else if (W_ > 0) {
      zeros_ = 0;
      cpg_ = 0;
      for (int32_t k = 0; k < W_; ++k) {
        zeros_ += win[k] == 0 ? 1 : 0;
        cpg_ += isCpG(win + k);
      }
    }
    have_ = inBlock;
    last_ = i;
  }
  bool hasN() const { return zeros_ > 0; }
  float count() const { return static_cast<float>(cpg_); }

 private:
  const MemoryBlock& m0_;
  int32_t W_;
  bool have_ = false;
  int64_t last_ = 0;
  int64_t zeros_ = 0, cpg_ = 0;
};

}  // namespace

void cpgScan(RunContext& c) {
  const MemoryBlock& m0 = c.st.m0;
  const int32_t W = c.W;
  const int32_t span = wrap32(c.lastpos - c.firstpos);
  RowBuffer& rows = c.rows;
  const bool sliding = !c.kernel->isScalar() && SlidingCounts::fits(W);
  SlidingCounts counts(m0, W);

  for (int64_t i = c.firstpos; i <= c.lastpos; ++i) {
    c.host.doEvents();
    // No counter here: the bar moves at every position, over 100 units only.
    int32_t done = wrap32(100 * static_cast<int64_t>(wrap32(i - c.firstpos)));
    c.host.progress(toInt(static_cast<double>(done) / static_cast<double>(span)), c.s.progressWidth);

    // The pair at k = W - 1 reads the first base behind the window.
    const uint8_t* win = c.window(m0, i, W + 1);
    if (sliding) counts.at(i, win);
    if (sliding ? counts.hasN() : hasN(win, W)) {
      c.st.m2.set(i, kProfileN);
      rows.beginRow();
      rows.append(Str(i + 1));
      rows.append(TAB);
      rows.append(letterOf(win[0]));
      rows.append("\t0");
      rows.append(EndOfLine);
      rows.endRow();
      continue;
    }
    // Stop test: only at windows without an N.
    if (c.stopAsked()) break;

    float maxscore = 0.0f;
    if (sliding) {
      maxscore = counts.count();
    } else {
      for (int32_t k = 0; k < W; ++k)
        if (win[k] == kC && win[k + 1] == kG) maxscore = maxscore + 1.0f;
    }
    c.profile.add(maxscore);
    c.st.m2.set(i, profileByte(maxscore, W));
    // The second field is the raw base code, not its letter.
    rows.beginRow();
    rows.append(Str(i + 1));
    rows.append(TAB);
    rows.append(static_cast<char>(win[0]));
    rows.append(TAB);
    rows.append(Str(maxscore));
    rows.append(EndOfLine);
    rows.endRow();
  }
}

}  // namespace trelvane
