// cpg_scan.cpp -- the CpG scan: CpG dinucleotides counted in the window at each position.
#include "engine/profile.h"
#include "engine/scan.h"
#include "platform/numtext.h"

namespace trelvane {

void cpgScan(RunContext& c) {
  const MemoryBlock& m0 = c.st.m0;
  const int32_t W = c.W;
  const int32_t span = wrap32(c.lastpos - c.firstpos);
  RowBuffer& rows = c.rows;

  for (int64_t i = c.firstpos; i <= c.lastpos; ++i) {
    c.host.doEvents();
    // No counter here: the bar moves at every position, over 100 units only.
    int32_t done = wrap32(100 * static_cast<int64_t>(wrap32(i - c.firstpos)));
    c.host.progress(toInt(static_cast<double>(done) / static_cast<double>(span)), c.s.progressWidth);

    // The pair at k = W - 1 reads the first base behind the window.
    const uint8_t* win = c.window(m0, i, W + 1);
    if (hasN(win, W)) {
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
    for (int32_t k = 0; k < W; ++k)
      if (win[k] == kC && win[k + 1] == kG) maxscore = maxscore + 1.0f;
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
