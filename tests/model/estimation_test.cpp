// estimation_test.cpp -- Apply: the three models, the grid with its G/C swap, its sums, no pair to count.
#include "model/estimation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <string>

#include "platform/numtext.h"

namespace trelvane {
namespace {

class Apply : public ::testing::Test {
 protected:
  void SetUp() override { st.open(); }

  void apply(int model, const std::string& s1, const std::string& s2) {
    form.SeqModel1 = s1;
    form.SeqModel2 = s2;
    form.PupModelListIndex = model;
    Apply_Action(st, form);
  }

  // A cell of the grid by its control name: column letter, then row letter,
  // with rows and columns shown in the order A, T, C, G.
  const std::string& cell(const char name[3]) const {
    const std::string order = "ATCG";
    return form.cells[4 * order.find(name[1]) + order.find(name[0])];
  }

  ComparisonState st;
  Form form;
};

// Row 0 and column 0 of matrice are never written.
void expectBorderZero(const ComparisonState& st) {
  for (int k = 0; k <= 4; ++k) {
    EXPECT_EQ(st.matrice[0][k], 0.0f) << k;
    EXPECT_EQ(st.matrice[k][0], 0.0f) << k;
  }
}

TEST_F(Apply, IdentityIgnoresTheTextsAndShowsOnesAndZeros) {
  apply(kGeneral, "ACGTTA", "ACGTCA");
  ASSERT_EQ(cell("AA"), "0.333");
  apply(kIdentity, "ACGTTA", "ACGTCA");
  for (int i = 1; i <= 4; ++i)
    for (int j = 1; j <= 4; ++j) EXPECT_EQ(st.matrice[i][j], i == j ? 1.0f : 0.0f) << i << j;
  expectBorderZero(st);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) EXPECT_EQ(form.cells[4 * r + c], r == c ? "1" : "0");
    EXPECT_EQ(form.Somme[r], "1");
  }
}

TEST_F(Apply, IdenticalAcgtGivesBaseFrequenciesWithGeneralModel) {
  apply(kGeneral, "ACGT", "ACGT");
  for (int i = 1; i <= 4; ++i)
    for (int j = 1; j <= 4; ++j) EXPECT_EQ(st.matrice[i][j], i == j ? 0.25f : 0.0f) << i << j;
  expectBorderZero(st);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) EXPECT_EQ(form.cells[4 * r + c], r == c ? "0.25" : "0");
    EXPECT_EQ(form.Somme[r], "0.25");
  }
}

TEST_F(Apply, IdenticalAcgtGivesOnesWithTsTv) {
  apply(kTsTv, "ACGT", "ACGT");
  for (int i = 1; i <= 4; ++i)
    for (int j = 1; j <= 4; ++j) EXPECT_EQ(st.matrice[i][j], i == j ? 1.0f : 0.0f) << i << j;
  expectBorderZero(st);
  for (int r = 0; r < 4; ++r) EXPECT_EQ(form.Somme[r], "1");
}

// n = 4, count[A, A] = 2, count[A, G] = 2: ts = 0.125, tv = 0.
TEST_F(Apply, TransitionsOnlyGiveRowsOfTsWithTsTv) {
  apply(kTsTv, "AAAA", "AAGG");
  const float expected[5][5] = {{0, 0, 0, 0, 0},
                                {0, 0.8f, 0, 0, 0.2f},
                                {0, 0, 0, 1, 0},
                                {0, 0, 1, 0, 0},
                                {0, 1, 0, 0, 0}};
  for (int i = 0; i <= 4; ++i)
    for (int j = 0; j <= 4; ++j) EXPECT_EQ(st.matrice[i][j], expected[i][j]) << i << j;

  // matrice[1, 4] lands in AC, row "C" of the screen; the ts cells are green ones.
  EXPECT_EQ(cell("AA"), "0.8");
  EXPECT_EQ(cell("AC"), "0.2");
  EXPECT_EQ(cell("CA"), "1");
  EXPECT_EQ(cell("GT"), "1");
  EXPECT_EQ(cell("TG"), "1");
  EXPECT_EQ(cell("GA"), "0");
  EXPECT_EQ(cell("AG"), "0");
  EXPECT_EQ(cell("CC"), "0");
  EXPECT_EQ(form.Somme[0], "1.8");
  EXPECT_EQ(form.Somme[1], "1");
  EXPECT_EQ(form.Somme[2], "0.2");
  EXPECT_EQ(form.Somme[3], "1");
}

// Every one of the sixteen pairs a different number of times, so that each
// cell of the grid shows which matrice cell it holds.
TEST_F(Apply, GridTakesFirstIndexAlongColumnsWithGAndCSwapped) {
  const std::string bases = "ATCG";
  std::string s1, s2;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) {
      int times = 1 + 4 * i + j;  // 1 .. 16, 136 pairs in all
      s1 += std::string(times, bases[i]);
      s2 += std::string(times, bases[j]);
    }
  apply(kGeneral, s1, s2);

  // matrice[code of SeqModel1][code of SeqModel2], codes A 1, T 2, C 3, G 4
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      EXPECT_EQ(st.matrice[i + 1][j + 1], toSingle((1 + 4 * i + j) / 136.0)) << i << j;

  // control names: column letter, then row letter; index 3 under "G", 4 under "C"
  const struct {
    const char* name;
    int first, second;
  } screen[16] = {{"AA", 1, 1}, {"TA", 2, 1}, {"CA", 4, 1}, {"GA", 3, 1},
                  {"AT", 1, 2}, {"TT", 2, 2}, {"CT", 4, 2}, {"GT", 3, 2},
                  {"AC", 1, 4}, {"TC", 2, 4}, {"CC", 4, 4}, {"GC", 3, 4},
                  {"AG", 1, 3}, {"TG", 2, 3}, {"CG", 4, 3}, {"GG", 3, 3}};
  for (int k = 0; k < 16; ++k) {
    EXPECT_EQ(std::string(kCellNames[k]), screen[k].name);
    EXPECT_EQ(cell(screen[k].name), Format(st.matrice[screen[k].first][screen[k].second], "#.###"))
        << screen[k].name;
  }
  EXPECT_EQ(cell("AA"), "0.007");  // 1 / 136
  EXPECT_EQ(cell("GC"), "0.088");  // matrice[3, 4]: 12 / 136
  EXPECT_EQ(cell("CG"), "0.11");   // matrice[4, 3]: 15 / 136
  EXPECT_EQ(cell("GG"), "0.081");  // matrice[3, 3]: 11 / 136
}

TEST_F(Apply, SumsAddTheRoundedTextsOfAScreenRow) {
  // three pairs with A in SeqModel2: matrice[1, 1], [2, 1], [3, 1] = 1/3 each,
  // shown as 0.333 in AA, TA and GA; their matrice sum is 1, the texts' 0.999.
  apply(kGeneral, "ATC", "AAA");
  EXPECT_EQ(cell("AA"), "0.333");
  EXPECT_EQ(cell("TA"), "0.333");
  EXPECT_EQ(cell("GA"), "0.333");
  EXPECT_EQ(cell("CA"), "0");
  EXPECT_EQ(form.Somme[0], "0.999");
  EXPECT_EQ(form.Somme[1], "0");
  EXPECT_EQ(form.Somme[2], "0");
  EXPECT_EQ(form.Somme[3], "0");
}

TEST_F(Apply, GeneralModelIsNotTurnedRound) {
  apply(kGeneral, "AAA", "GGG");
  EXPECT_EQ(st.matrice[kA][kG], 1.0f);
  EXPECT_EQ(st.matrice[kG][kA], 0.0f);
  EXPECT_EQ(cell("AC"), "1");
  EXPECT_EQ(form.Somme[2], "1");
  EXPECT_EQ(form.Somme[0], "0");
}

TEST_F(Apply, CountsCodesOfEitherCaseAndSkipsEveryOtherPair) {
  // counted: a/A, A/a, T/t, c/C; skipped: U, gap, N, blank, line end, "?"
  apply(kGeneral, "aAu-NTc \r", "AaAAAtC?A");
  EXPECT_EQ(st.matrice[kA][kA], 0.5f);
  EXPECT_EQ(st.matrice[kT][kT], 0.25f);
  EXPECT_EQ(st.matrice[kC][kC], 0.25f);
  EXPECT_EQ(st.matrice[kG][kG], 0.0f);
  EXPECT_EQ(st.matrice[kA][kT], 0.0f);
}

TEST_F(Apply, PairWithAGapCountsOnlyTheOther) {
  apply(kGeneral, "A-", "AC");
  EXPECT_EQ(st.matrice[kA][kA], 1.0f);
  EXPECT_EQ(st.matrice[kA][kC], 0.0f);
  EXPECT_EQ(form.Somme[0], "1");
}

TEST_F(Apply, ShorterSecondTextCountsOnlyItsCharacters) {
  apply(kGeneral, "ACGT", "AC");
  EXPECT_EQ(st.matrice[kA][kA], 0.5f);
  EXPECT_EQ(st.matrice[kC][kC], 0.5f);
  EXPECT_EQ(st.matrice[kG][kG], 0.0f);
  EXPECT_EQ(st.matrice[kT][kT], 0.0f);
}

TEST_F(Apply, NoCountablePairGivesNotANumberWithoutAGuard) {
  for (int model : {int(kTsTv), int(kGeneral)}) {
    for (const char* s2 : {"----", "NNNN"}) {
      st.open();
      apply(model, "ACGT", s2);
      for (int i = 1; i <= 4; ++i)
        for (int j = 1; j <= 4; ++j) EXPECT_TRUE(std::isnan(st.matrice[i][j])) << model << i << j;
      expectBorderZero(st);
      for (const auto& text : form.cells) EXPECT_EQ(text, "NaN");
      for (const auto& text : form.Somme) EXPECT_EQ(text, "NaN");
    }
  }
  apply(kGeneral, "", "");
  EXPECT_TRUE(std::isnan(st.matrice[kA][kA]));
}

TEST_F(Apply, TsTvRowWithoutDiagonalTsOrTvIsNotANumber) {
  // n = 1, ts = tv = 0: only row A has a divisor; rows T, C, G have d = 0.
  apply(kTsTv, "A-", "AC");
  EXPECT_EQ(st.matrice[kA][kA], 1.0f);
  for (int j = 2; j <= 4; ++j) EXPECT_EQ(st.matrice[kA][j], 0.0f);
  for (int i = 2; i <= 4; ++i)
    for (int j = 1; j <= 4; ++j) EXPECT_TRUE(std::isnan(st.matrice[i][j])) << i << j;
  EXPECT_EQ(cell("AA"), "1");
  EXPECT_EQ(cell("TA"), "NaN");
  EXPECT_EQ(form.Somme[0], "NaN");
}

TEST_F(Apply, UnknownListIndexOnlyShowsMatrice) {
  apply(kGeneral, "ATC", "AAA");
  float before[5][5];
  std::copy(&st.matrice[0][0], &st.matrice[0][0] + 25, &before[0][0]);
  form.cells.fill("");
  apply(-1, "GGGG", "GGGG");
  for (int i = 0; i <= 4; ++i)
    for (int j = 0; j <= 4; ++j) EXPECT_EQ(st.matrice[i][j], before[i][j]);
  EXPECT_EQ(cell("AA"), "0.333");
  EXPECT_EQ(form.Somme[0], "0.999");
}

// A real alignment: exon 1 and the start of intron 1 of human beta-globin
// against epsilon-globin, with gaps. The expected matrices come from a count
// of letter pairs made here, with the model's formulas written out anew.
class RealAlignment : public Apply {
 protected:
  static std::string sequenceOf(const std::string& path) {
    std::ifstream in(path);
    std::string line, text;
    while (std::getline(in, line))
      if (line.rfind(">", 0) != 0) text += line;
    return text;
  }

  void SetUp() override {
    Apply::SetUp();
    beta = sequenceOf(TRELVANE_TEST_DATA "/model/hbb_beta.aln");
    epsilon = sequenceOf(TRELVANE_TEST_DATA "/model/hbb_epsilon.aln");
    ASSERT_EQ(beta.size(), 309u);
    ASSERT_EQ(epsilon.size(), 309u);
    for (std::size_t p = 0; p < beta.size(); ++p)
      if (beta[p] != '-' && epsilon[p] != '-') {
        ++pairs[{beta[p], epsilon[p]}];
        ++n;
      }
  }

  int of(char x, char y) { return pairs[{x, y}]; }

  std::string beta, epsilon;
  std::map<std::pair<char, char>, int> pairs;
  int n = 0;
  const std::string letters = "ATCG";  // by code 1 .. 4
};

TEST_F(RealAlignment, GeneralModelIsTheShareOfEachPair) {
  apply(kGeneral, beta, epsilon);
  ASSERT_GT(n, 250);
  double total = 0;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) {
      EXPECT_EQ(st.matrice[i + 1][j + 1], toSingle(double(of(letters[i], letters[j])) / n))
          << letters[i] << letters[j];
      total += st.matrice[i + 1][j + 1];
    }
  EXPECT_NEAR(total, 1.0, 1e-6);
}

TEST_F(RealAlignment, TsTvRowsSumToOne) {
  apply(kTsTv, beta, epsilon);
  int transitions = of('A', 'G') + of('G', 'A') + of('C', 'T') + of('T', 'C');
  int transversions = 0;
  for (char x : letters)
    for (char y : letters)
      if (x != y) transversions += of(x, y);
  transversions -= transitions;
  ASSERT_GT(transitions, 0);
  ASSERT_GT(transversions, 0);
  float ts = toSingle(transitions / (4.0 * n));
  float tv = toSingle(transversions / (8.0 * n));

  for (int i = 0; i < 4; ++i) {
    float same = toSingle(double(of(letters[i], letters[i])) / n);
    double d = double(same) + 2.0 * tv + ts;
    double rowSum = 0;
    for (int j = 0; j < 4; ++j) {
      bool transition = (letters[i] == 'A' && letters[j] == 'G') ||
                        (letters[i] == 'G' && letters[j] == 'A') ||
                        (letters[i] == 'C' && letters[j] == 'T') ||
                        (letters[i] == 'T' && letters[j] == 'C');
      float top = i == j ? same : transition ? ts : tv;
      EXPECT_EQ(st.matrice[i + 1][j + 1], toSingle(top / d)) << letters[i] << letters[j];
      rowSum += st.matrice[i + 1][j + 1];
    }
    EXPECT_NEAR(rowSum, 1.0, 1e-6) << letters[i];
  }
  // ts on the green cells, tv on the yellow ones off the diagonal
  EXPECT_EQ(cell("AC"), Format(st.matrice[kA][kG], "#.###"));
  EXPECT_EQ(cell("GA"), Format(st.matrice[kC][kA], "#.###"));
}

}  // namespace
}  // namespace trelvane
