// estimation_test.cpp -- Apply: the three models, the grid with its G/C swap, its sums, no pair to count.
#include "model/estimation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "model/aligned.h"
#include "platform/numtext.h"

namespace trelvane {
namespace {

// The words of a text; "a/b" words are read as the Single a / b.
std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}
float single(const std::string& w) {
  const auto slash = w.find('/');
  return slash == std::string::npos ? toSingle(CDbl(w)) : toSingle(Val(w) / Val(w.substr(slash + 1)));
}
bool same(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// Apply in a newly opened window.
void apply(ComparisonState& st, Form& form, int model, const std::string& s1, const std::string& s2) {
  st.open();
  form.SeqModel1 = s1, form.SeqModel2 = s2, form.PupModelListIndex = model;
  Apply_Action(st, form);
}

// A border of zeros, and each cell the "#.###" text of the matrice cell it
// shows: first index along the columns, rows and columns A, T, C, G by codes 1 2 4 3.
void expectShown(const ComparisonState& st, const Form& form) {
  const int code[4] = {1, 2, 4, 3};
  for (int k = 0; k <= 4; ++k) EXPECT_TRUE(st.matrice[0][k] == 0 && st.matrice[k][0] == 0) << k;
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c)
      EXPECT_EQ(form.cells[4 * r + c], Format(st.matrice[code[c]][code[r]], "#.###")) << r << c;
}

const std::string NaNs = "NaN NaN NaN NaN ";
const struct {
  const char *name, *s1, *s2;
  int model;
  std::string matrice, somme;  // matrice[1..4][1..4] by codes A T C G; the four sums
} cases[] = {
    {"identity ignores the texts", "ACGTTA", "ACGTCA", kIdentity, "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", "1 1 1 1"},
    {"general, identical", "ACGT", "ACGT", kGeneral, ".25 0 0 0 0 .25 0 0 0 0 .25 0 0 0 0 .25", ".25 .25 .25 .25"},
    {"TS/TV, identical", "ACGT", "ACGT", kTsTv, "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", "1 1 1 1"},
    {"TS/TV, transitions only", "AAAA", "AAGG", kTsTv, ".8 0 0 .2 0 0 1 0 0 1 0 0 1 0 0 0", "1.8 1 0.2 1"},
    {"sums add the rounded texts", "ATC", "AAA", kGeneral, "1/3 0 0 0 1/3 0 0 0 1/3 0 0 0 0 0 0 0", "0.999 0 0 0"},
    {"general not turned round", "AAA", "GGG", kGeneral, "0 0 0 1 0 0 0 0 0 0 0 0 0 0 0 0", "0 0 1 0"},
    {"either case, others skipped", "aAu-NTc \r", "AaAAAtC?A", kGeneral, ".5 0 0 0 0 .25 0 0 0 0 .25 0 0 0 0 0", "0.5 0.25 0 0.25"},
    {"a gap counts only the other", "A-", "AC", kGeneral, "1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0", "1 0 0 0"},
    {"shorter second text", "ACGT", "AC", kGeneral, ".5 0 0 0 0 0 0 0 0 0 .5 0 0 0 0 0", "0.5 0 0 0.5"},
    {"TS/TV, no pair (gaps)", "ACGT", "----", kTsTv, NaNs + NaNs + NaNs + NaNs, NaNs},
    {"general, no pair (Ns)", "ACGT", "NNNN", kGeneral, NaNs + NaNs + NaNs + NaNs, NaNs},
    {"general, empty texts", "", "", kGeneral, NaNs + NaNs + NaNs + NaNs, NaNs},
    {"TS/TV, rows without a divisor", "A-", "AC", kTsTv, "1 0 0 0 " + NaNs + NaNs + NaNs, NaNs},
};

TEST(Apply, ModelsGridAndSums) {
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Form form;
    ComparisonState st;
  apply(st, form, c.model, c.s1, c.s2);
    const auto m = words(c.matrice), sums = words(c.somme);
    for (int k = 0; k < 16; ++k) EXPECT_TRUE(same(st.matrice[k / 4 + 1][k % 4 + 1], single(m[k]))) << k;
    expectShown(st, form);
    for (int r = 0; r < 4; ++r) EXPECT_EQ(form.Somme[r], Format(CDbl(sums[r]), "#.###")) << r;
  }
}

// Each of the sixteen pairs a different number of times (1 .. 16 of 136),
// so that each cell of the grid shows which matrice cell it holds.
TEST(Apply, GridTakesFirstIndexAlongColumnsWithGAndCSwapped) {
  std::string s1, s2;
  for (int k = 0; k < 16; ++k) s1 += std::string(1 + k, "ATCG"[k / 4]), s2 += std::string(1 + k, "ATCG"[k % 4]);
  Form form;
  ComparisonState st;
  apply(st, form, kGeneral, s1, s2);
  for (int k = 0; k < 16; ++k) EXPECT_EQ(st.matrice[k / 4 + 1][k % 4 + 1], toSingle((1 + k) / 136.0));
  expectShown(st, form);
  EXPECT_EQ(form.cells[11], "0.088");  // GC: matrice[3, 4], 12 / 136
  EXPECT_EQ(form.cells[14], "0.11");   // CG: matrice[4, 3], 15 / 136
}

TEST(Apply, UnknownListIndexOnlyShowsMatrice) {
  Form form;
  ComparisonState st;
  apply(st, form, kGeneral, "ATC", "AAA");
  form.cells.fill("");
  form.SeqModel1 = form.SeqModel2 = "GGGG", form.PupModelListIndex = -1;
  Apply_Action(st, form);
  EXPECT_EQ(st.matrice[kA][kA], single("1/3"));
  EXPECT_EQ(st.matrice[kG][kG], 0.0f);
  EXPECT_EQ(form.cells[0], "0.333");
  EXPECT_EQ(form.Somme[0], "0.999");
}

// Exon 1 and the start of intron 1 of human beta-globin against
// epsilon-globin, with gaps, read as pasted; the expected matrices come from
// the model's formulas written out anew over a count of letter pairs.
TEST(Apply, RealAlignmentMatchesTheFormulas) {
  std::string error = "old";
  const std::string beta = readAlignedFile(TRELVANE_TEST_DATA "/model/hbb_beta.aln", &error);
  const std::string eps = readAlignedFile(TRELVANE_TEST_DATA "/model/hbb_epsilon.aln", &error);
  ASSERT_EQ(error, "");
  ASSERT_TRUE(beta.size() == 309u && eps.size() == 309u);
  EXPECT_EQ(eps.substr(0, 12), "--TC-TGCTTCC");
  const std::string L = "ATCG", transitions = "AG GA CT TC";
  std::map<std::string, int> of;
  int n = 0, ts = 0, tv = 0;
  for (std::size_t p = 0; p < beta.size(); ++p) {
    const std::string pair{beta[p], eps[p]};
    if (pair.find('-') != std::string::npos) continue;
    ++of[pair], ++n;
    if (pair[0] != pair[1] && pair.find_first_not_of(L) == std::string::npos)
      ++(transitions.find(pair) != std::string::npos ? ts : tv);
  }
  ASSERT_TRUE(n > 250 && ts > 0 && tv > 0);
  Form form;
  ComparisonState st;
  apply(st, form, kGeneral, beta, eps);
  for (int k = 0; k < 16; ++k)
    EXPECT_EQ(st.matrice[k / 4 + 1][k % 4 + 1], toSingle(double(of[{L[k / 4], L[k % 4]}]) / n)) << k;
  apply(st, form, kTsTv, beta, eps);
  const float fts = toSingle(ts / (4.0 * n)), ftv = toSingle(tv / (8.0 * n));
  for (int k = 0; k < 16; ++k) {
    const int i = k / 4, j = k % 4;
    const float diag = toSingle(double(of[{L[i], L[i]}]) / n);
    const bool t = transitions.find(std::string{L[i], L[j]}) != std::string::npos;
    EXPECT_EQ(st.matrice[i + 1][j + 1], toSingle((i == j ? diag : t ? fts : ftv) / (double(diag) + 2.0 * ftv + fts))) << k;
  }
  expectShown(st, form);
}

}  // namespace
}  // namespace trelvane
