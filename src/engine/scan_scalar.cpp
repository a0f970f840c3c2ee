// scan_scalar.cpp -- the substitution scan along the longest sequence, with the scalar kernels.
#include <algorithm>
#include <charconv>
#include <cstring>

#include "engine/profile.h"
#include "engine/scan.h"
#include "platform/numtext.h"

namespace trelvane {

bool hasN(const uint8_t* win, int32_t W) {
  return W > 0 && std::memchr(win, 0, static_cast<std::size_t>(W)) != nullptr;
}

float fullScoreFromFirst(const uint8_t* shortWin, const uint8_t* longWin, int32_t W,
                         const CellTable& cells) {
  float s = cells.cell(shortWin[0], longWin[0]);
  for (int32_t k = 1; k < W; ++k) s = s + cells.cell(shortWin[k], longWin[k]);
  return s;
}

float fullScoreFromZero(const uint8_t* shortWin, const uint8_t* longWin, int32_t W,
                        const CellTable& cells) {
  float s = 0.0f;
  for (int32_t k = 0; k < W; ++k) s = s + cells.cell(shortWin[k], longWin[k]);
  return s;
}

void advanceRow(float* scorerow, const uint8_t* m1, int64_t lastshort, int32_t W,
                const float* leaving, const float* entering) {
  // Descending, so that scorerow[j - 1] still holds the previous position.
  for (int64_t j = lastshort; j >= 1; --j) {
    float s = scorerow[j - 1] - leaving[m1[j - 1]];
    s = s + entering[m1[j + W - 1]];
    scorerow[j] = s;
  }
}

namespace {

// The plain digits of an integer, as Str gives them, without a string of its own.
struct Digits {
  explicit Digits(int64_t v) : end(std::to_chars(buf, buf + sizeof buf, v).ptr) {}
  std::string_view text() const { return std::string_view(buf, static_cast<std::size_t>(end - buf)); }
  char buf[24];
  char* end;
};

// A scored row in the making: the row's fields gathered on the stack and
// handed to `out` in pieces of about kPiece bytes. Digits are copied as a
// whole Digits buffer, a copy of a size known when compiling; the fields
// before the starts fit in the first piece (a Single's text is at most 13
// characters, an Integer's 20).
class ScoredRowMaker {
 public:
  ScoredRowMaker(std::string& out, ScoreTexts& texts, int64_t i, uint8_t base, float s) : out_(out) {
    putDigits(Digits(i + 1));
    piece_[n_++] = TAB;
    piece_[n_++] = letterOf(base);
    piece_[n_++] = TAB;
    for (char ch : texts.of(s)) piece_[n_++] = ch;
    piece_[n_++] = TAB;
  }
  // A tied start, entered as j + 1; the starts are TAB-separated.
  void tie(int64_t entry) {
    if (ties_++ > 0) piece_[n_++] = TAB;
    putDigits(Digits(entry));
    if (n_ >= kPiece) flush();
  }
  // Tied starts already written out, TAB-separated.
  void ties(std::string_view text) {
    flush();
    out_.append(text);
  }
  void end() {
    piece_[n_++] = EndOfLine[0];
    flush();
  }

 private:
  static constexpr std::size_t kPiece = 512;

  void putDigits(const Digits& d) {
    std::memcpy(piece_ + n_, d.buf, sizeof d.buf);
    n_ += static_cast<std::size_t>(d.end - d.buf);
  }
  void flush() {
    out_.append(piece_, n_);
    n_ = 0;
  }

  std::string& out_;
  char piece_[kPiece + sizeof(Digits::buf) + 16];
  std::size_t n_ = 0;
  int64_t ties_ = 0;
};

}  // namespace

void appendStart(std::string& tielist, int64_t j) {
  tielist += Digits(j + 1).text();
  tielist += TAB;
}

// The alignment of shortest window j against longest window i, both 0-based:
// the two starts, the two windows' letters and the line of matches, written
// in one piece at the end of the report.
void listAlignment(RunContext& c, int64_t j, int64_t i, const uint8_t* longWin) {
  alignmentText(c.report, c.m1->data(), c.W, j, i, longWin);
}

void alignmentText(std::string& r, const uint8_t* m1, int32_t W, int64_t j, int64_t i, const uint8_t* longWin) {
  static_assert(EndOfLine.size() == 1);
  if (W < 0) W = 0;
  const uint8_t* shortWin = m1 + j;
  const Digits from(j), to(i);
  const std::size_t at = r.size();
  r.resize(at + from.text().size() + to.text().size() + 3 * static_cast<std::size_t>(W) + 6);
  char* p = r.data() + at;
  p = std::copy(from.text().begin(), from.text().end(), p);
  *p++ = TAB;
  p = std::copy(to.text().begin(), to.text().end(), p);
  *p++ = EndOfLine[0];
  for (int32_t k = 0; k < W; ++k) *p++ = letterOf(shortWin[k]);
  *p++ = EndOfLine[0];
  for (int32_t k = 0; k < W; ++k) *p++ = letterOf(longWin[k]);
  *p++ = EndOfLine[0];
  for (int32_t k = 0; k < W; ++k) *p++ = shortWin[k] == longWin[k] ? '+' : ' ';
  *p++ = EndOfLine[0];
  *p++ = EndOfLine[0];
}

namespace {

// Testing a score s at start j: ties, a new best, the alignment listing.
inline void testScore(RunContext& c, float s, int64_t j, int64_t i, const uint8_t* longWin,
                      float& maxscore) {
  if (s == maxscore) appendStart(c.tielist, j);
  if (s > maxscore) {
    maxscore = s;
    c.tielist.clear();
    appendStart(c.tielist, j);
  }
  if (c.idthreshold <= s) listAlignment(c, j, i, longWin);
}

}  // namespace

bool yieldAndTestStop(RunContext& c, int32_t& counter, int32_t progressstep, int32_t units, int32_t total) {
  c.host.doEvents();
  if (++counter >= progressstep) {
    int32_t done = wrap32(static_cast<int64_t>(c.s.progressWidth) * units);
    c.host.progress(toInt(static_cast<double>(done) / static_cast<double>(total)), c.s.progressWidth);
    counter = 0;
  }
  c.testTextLimit();
  return c.stopAsked();
}

std::string_view ScoreTexts::of(float s) {
  uint32_t bits;
  std::memcpy(&bits, &s, sizeof bits);
  if (!text_ || bits != bits_) {
    text_ = Str(s);
    bits_ = bits;
  }
  return *text_;
}

void scoredProfile(RunContext& c, int64_t i, float s) {
  c.profile.add(s);
  c.st.m2.set(i, profileByte(s, c.W));
}

void nProfile(RunContext& c, int64_t i) { c.st.m2.set(i, kProfileN); }

void scoredRow(RunContext& c, int64_t i, uint8_t base, float s) {
  scoredProfile(c, i, s);
  ScoredRowMaker row(c.rows.begin(), c.scoreTexts, i, base, s);
  std::string_view ties = c.tielist;
  if (!ties.empty()) ties.remove_suffix(1);
  row.ties(ties);
  row.end();
  c.rows.endRow();
}

void scoredRowText(std::string& out, ScoreTexts& texts, int64_t i, uint8_t base, float s, const int64_t* entries,
                   uint32_t count) {
  ScoredRowMaker row(out, texts, i, base, s);
  for (uint32_t k = 0; k < count; ++k)
    if (entries[k] > 0) row.tie(entries[k]);  // a negative one is a listed start, in the report
  row.end();
}

void scoredRowOfEntries(RunContext& c, int64_t i, uint8_t base, float s, const int64_t* entries,
                        uint32_t count) {
  scoredProfile(c, i, s);
  scoredRowText(c.rows.begin(), c.scoreTexts, i, base, s, entries, count);
  c.rows.endRow();
}

void nRowText(std::string& out, int64_t i, uint8_t base) {
  const Digits d(i + 1);
  out.append(d.text());
  out += TAB;
  out += letterOf(base);
  out.append("\t0\t0");
  out.append(EndOfLine);
}

void nRow(RunContext& c, int64_t i, uint8_t base) {
  nProfile(c, i);
  nRowText(c.rows.begin(), i, base);
  c.rows.endRow();
}

void scoreFirstPosition(RunContext& c) {
  const uint8_t* m1 = c.m1->data();
  const int64_t i = c.firstpos;
  float maxscore = 0.0f;  // tielist still holds the 200 filling characters
  const uint8_t* win = c.window(c.st.m0, i, c.W + 1);
  for (int64_t j = 0; j <= c.lastshort; ++j) {
    c.scorerow[j] = fullScoreFromFirst(m1 + j, win, c.W, c.cells);
    testScore(c, c.scorerow[j], j, i, win, maxscore);
  }
  if (hasN(win, c.W)) nRow(c, i, win[0]);
  else scoredRow(c, i, win[0], maxscore);
}

void substitutionScan(RunContext& c) {
  if (!c.kernel->isScalar()) {
    substitutionScanColumns(c);
    return;
  }
  const MemoryBlock& m0 = c.st.m0;
  const uint8_t* m1 = c.m1->data();
  const int32_t W = c.W;
  const int64_t lastshort = c.lastshort;
  float* scorerow = c.scorerow.data();
  scoreFirstPosition(c);

  // every further position, by the diagonal recurrence
  int64_t i;
  float maxscore;
  const uint8_t* win;
  const int32_t span = wrap32(c.lastpos - c.firstpos);
  const int32_t total = wrap32(static_cast<int64_t>(span) + c.nresample);
  const int32_t progressstep = toInt(span / 100.0);
  int32_t counter = 0;
  for (i = c.firstpos + 1; i <= c.lastpos; ++i) {
    if (yieldAndTestStop(c, counter, progressstep, scanUnits(c, i), total)) break;

    c.tielist.clear();
    win = c.window(m0, i, W + 1);
    advanceRow(scorerow, m1, lastshort, W, c.cells.column(m0.get(i - 1)),
               c.cells.column(m0.get(i + W - 1)));
    scorerow[0] = fullScoreFromFirst(m1, win, W, c.cells);

    if (hasN(win, W)) {
      // The row of scores is kept up to date across the N, untested.
      nRow(c, i, win[0]);
      continue;
    }
    maxscore = 0.0f;
    for (int64_t j = lastshort; j >= 1; --j) testScore(c, scorerow[j], j, i, win, maxscore);
    testScore(c, scorerow[0], 0, i, win, maxscore);
    scoredRow(c, i, win[0], maxscore);
  }
}

}  // namespace trelvane
