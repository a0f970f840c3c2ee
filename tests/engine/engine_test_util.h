// engine_test_util.h -- comparison states from letters or FASTA files, a recording run host, runs described by data.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/run.h"
#include "state/state.h"

// The tests give RunSettings by designated fields and leave resultPath to its
// default; GCC 12 would warn about every such initializer.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace trelvane::testing {

inline uint8_t codeOf(char c) { return c == 'A' ? kA : c == 'T' ? kT : c == 'C' ? kC : c == 'G' ? kG : kN; }

inline std::vector<uint8_t> codesOf(std::string_view letters) {
  std::vector<uint8_t> out;
  for (char c : letters) out.push_back(codeOf(c));
  return out;
}

// A sequence block as the readers leave it: one code a base, 100 zero bytes behind.
inline MemoryBlock blockOf(std::string_view letters) {
  MemoryBlock m(static_cast<std::ptrdiff_t>(letters.size()) + 100);
  for (std::size_t k = 0; k < letters.size(); ++k) m.set(static_cast<std::ptrdiff_t>(k), codeOf(letters[k]));
  return m;
}

// One side of the comparison, as its reader leaves it: 0 the longest, 1 the shortest.
inline void setSide(ComparisonState& st, int side, std::string_view letters) {
  (side == 0 ? st.m0 : st.m1) = blockOf(letters);
  (side == 0 ? st.nbbases : st.nbbases1) = static_cast<int32_t>(letters.size());
  for (auto& row : st.basesfreq) row[side] = 0;
  for (char c : letters) ++st.basesfreq[codeOf(c)][side];
}
inline void setLong(ComparisonState& st, std::string_view letters) { setSide(st, 0, letters); }
inline void setShort(ComparisonState& st, std::string_view letters) { setSide(st, 1, letters); }

// A matrix whose cells are no binary fractions, so that sums round.
inline void setModel(ComparisonState& st) {
  const float model[4][4] = {
      {0.91f, 0.03f, 0.05f, 0.01f}, {0.07f, 0.83f, 0.01f, 0.09f}, {0.02f, 0.11f, 0.77f, 0.1f}, {0.013f, 0.047f, 0.19f, 0.75f}};
  for (int s = 1; s <= 4; ++s)
    for (int l = 1; l <= 4; ++l) st.matrice[s][l] = model[s - 1][l - 1];
}

// The scores of every start j of the short codes against the windows of the
// long codes at first..last, by the definition: the first row and every start
// 0 summed in full, every other score from its diagonal predecessor one row
// up (a whole table, no row updated in place), each step rounded to Single.
inline std::vector<std::vector<float>> scoreTable(const ComparisonState& st, const std::vector<uint8_t>& sh,
                                                  const std::vector<uint8_t>& lg, int W, int first, int last) {
  auto cell = [&](int j, int i) { return st.matrice[sh[j]][lg[i]]; };
  const int lastshort = static_cast<int>(sh.size()) - W;
  std::vector<std::vector<float>> table;
  for (int i = first; i <= last; ++i) {
    std::vector<float> row(static_cast<std::size_t>(lastshort) + 1);
    for (int j = 0; j <= lastshort; ++j) {
      if (i == first || j == 0) {
        row[j] = cell(j, i);
        for (int k = 1; k < W; ++k) row[j] += cell(j + k, i + k);
      } else {
        row[j] = (table.back()[j - 1] - cell(j - 1, i - 1)) + cell(j + W - 1, i + W - 1);
      }
    }
    table.push_back(std::move(row));
  }
  return table;
}

// A plain upper-case FASTA file as letters: title lines skipped, line ends
// dropped; optionally reversed and complemented as the reader's options do.
inline std::string readFasta(const std::string& path, bool reverse = false, bool complement = false) {
  std::ifstream in(path, std::ios::binary);
  std::string line, letters;
  while (std::getline(in, line)) {
    if (!line.empty() && (line[0] == '>' || line[0] == '%')) continue;
    for (char c : line)
      if (c != '\r') letters += c;
  }
  if (complement)
    for (char& c : letters) c = c == 'A' ? 'T' : c == 'T' ? 'A' : c == 'C' ? 'G' : c == 'G' ? 'C' : c;
  if (reverse) letters.assign(letters.rbegin(), letters.rend());
  return letters;
}

inline std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// A fresh window's state with both sequences.
inline void openWith(ComparisonState& st, std::string_view longLetters, std::string_view shortLetters) {
  st.open();
  setLong(st, longLetters);
  setShort(st, shortLetters);
}

// Records what a run tells its window; doEvents can ask for a stop after k calls.
class RecordingHost : public RunHost {
 public:
  explicit RecordingHost(ComparisonState& st, int stopAfter = -1) : st_(st), stopAfter_(stopAfter) {}

  void message(const std::string& text) override { messages.push_back(text); }
  void progress(int value, int maximum) override { progressValues.push_back(value), lastMaximum = maximum; }
  void doEvents() override {
    if (++doEventsCalls >= stopAfter_ && stopAfter_ >= 0) st_.askclose = true;
  }
  void setEFAnaTo(const std::string& text) override { efAnaTo.push_back(text); }
  void setClipboard(std::string text) override { clipboard = std::move(text), ++clipboardCalls; }
  void beep() override { ++beeps; }

  std::vector<std::string> messages, efAnaTo;
  std::vector<int> progressValues;
  int lastMaximum = 0, doEventsCalls = 0, clipboardCalls = 0, beeps = 0;
  std::string clipboard;

 private:
  ComparisonState& st_;
  int stopAfter_;
};

// The rows of a clipboard text: what follows the "#" line.
inline std::string rowsOf(const std::string& clipboard) {
  std::size_t hash = clipboard.find("\n#\n");
  return hash == std::string::npos ? std::string() : clipboard.substr(hash + 3);
}

// Splits a text into lines without their line ends.
inline std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    out.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  return out;
}

// The value behind the first report line that starts with key.
inline std::string valueOf(const std::string& report, const std::string& key) {
  for (const std::string& l : linesOf(report))
    if (l.rfind(key, 0) == 0) return l.substr(key.size());
  return "(missing)";
}

// One run on a fresh window: the long sequence alone (CpG) or both.
struct TestRun {
  ComparisonState st;
  RecordingHost host;
  RunOutcome out;
  std::vector<std::string> rows;  // the clipboard's rows

  explicit TestRun(std::string_view lg, std::string_view sh = {}, int stopAfter = -1) : host(st, stopAfter) {
    st.open();
    setLong(st, lg);
    if (!sh.empty()) setShort(st, sh);
  }
  TestRun& run(const RunSettings& s) {
    out = rumcompute(st, s, host);
    rows = linesOf(rowsOf(host.clipboard));
    return *this;
  }
};

// A run described by data: the rows, profile bytes and report parts it must give.
struct RowCase {
  const char* name;
  std::string lg, sh;
  RunSettings s;
  std::vector<std::pair<int, std::string>> rows;
  int nrows = -1;
  std::vector<std::pair<int, int>> bytes = {};
  std::vector<std::string> reportHas = {};
  float offDiagonal = 0;  // the matrix's cells off the diagonal
};

inline void expectCase(const RowCase& c) {
  SCOPED_TRACE(c.name);
  TestRun r(c.lg, c.sh);
  for (int a = 1; a <= 4; ++a)
    for (int b = 1; b <= 4; ++b)
      if (a != b) r.st.matrice[a][b] = c.offDiagonal;
  RunSettings s = c.s;
  s.CBClipboard = true;
  r.run(s);
  if (c.nrows >= 0) {
    EXPECT_EQ(r.rows.size(), static_cast<std::size_t>(c.nrows));
  }
  for (const auto& [k, row] : c.rows) {
    ASSERT_LT(static_cast<std::size_t>(k), r.rows.size());
    EXPECT_EQ(r.rows[k], row) << "row " << k;
  }
  for (const auto& [k, b] : c.bytes) EXPECT_EQ(r.st.m2.get(k), b) << "m2 at " << k;
  for (const std::string& part : c.reportHas) EXPECT_NE(r.out.report.find(part), std::string::npos) << part;
}

}  // namespace trelvane::testing
