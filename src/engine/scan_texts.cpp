// scan_texts.cpp -- what the scan writes of a position: its row with the tied starts, its alignments, its profile byte.
#include <algorithm>
#include <charconv>
#include <cstring>

#include "state/profile.h"
#include "engine/scan.h"
#include "platform/numtext.h"

namespace trelvane {

namespace {

// The plain digits of an integer, as Str gives them, without a string of its own.
struct Digits {
  explicit Digits(int64_t v) : end(std::to_chars(buf, buf + sizeof buf, v).ptr) {}
  std::string_view text() const { return std::string_view(buf, static_cast<std::size_t>(end - buf)); }
  char buf[24];
  char* end;
};

// A scored row in the making: the row's fields gathered on the stack and
// handed to `out` in pieces of about kPiece bytes. Numbers are written
// straight into the piece (a copy of a Digits buffer, read back in words
// just after its digits were stored one by one, waited on each store); the
// fields before the starts fit in the first piece (a Single's text is at
// most 13 characters, an Integer's 20).
class ScoredRowMaker {
 public:
  ScoredRowMaker(std::string& out, ScoreTexts& texts, int64_t i, uint8_t base, float s) : out_(out) {
    putDigits(i + 1);
    piece_[n_++] = TAB;
    piece_[n_++] = letterOf(base);
    piece_[n_++] = TAB;
    for (char ch : texts.of(s)) piece_[n_++] = ch;
    piece_[n_++] = TAB;
  }
  // A tied start, entered as j + 1; the starts are TAB-separated.
  void tie(int64_t entry) {
    if (ties_++ > 0) piece_[n_++] = TAB;
    putDigits(entry);
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

  // an Integer's digits take at most 20 characters
  void putDigits(int64_t v) { n_ = static_cast<std::size_t>(std::to_chars(piece_ + n_, piece_ + n_ + 24, v).ptr - piece_); }
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

}  // namespace trelvane
