// model_test.cpp -- the Model tab by scripts of user steps; the matrices of a real alignment against the formulas.
#include <gtest/gtest.h>

#include <map>

#include "model/aligned.h"
#include "model/entry.h"
#include "model/estimation.h"
#include "support/desk.h"

namespace trelvane::testing {
namespace {

const std::map<std::string, Step> kSteps = {
    {"SeqModel1", [](Desk& d, const std::string& v, std::ostream&) { d.form.SeqModel1 = v, SeqModel1_TextChange(d.form); }},
    {"SeqModel2", [](Desk& d, const std::string& v, std::ostream&) { d.form.SeqModel2 = v, SeqModel2_TextChange(d.form); }},
    {"PupModel", [](Desk& d, const std::string& v, std::ostream&) {
       d.form.PupModelListIndex = std::stoi(v);
       PupModel_Change(d.st, d.form);
     }},
    {"PupModel_Change", [](Desk& d, const std::string&, std::ostream&) { PupModel_Change(d.form); }},
    {"Apply", [](Desk& d, const std::string&, std::ostream&) { Apply_Action(d.st, d.form); }},
    // each key swallowed (1) or passed (0)
    {"keys", [](Desk&, const std::string& v, std::ostream& out) {
       std::string swallowed;
       for (char key : v) swallowed += SeqModel_KeyDown(key) ? '1' : '0';
       show(out, swallowed);
     }},
    // applyModelFromTexts: INDEX TEXT1|TEXT2
    {"apply", [](Desk& d, const std::string& v, std::ostream& out) {
       const std::size_t space = v.find(' '), bar = v.find('|');
       std::string error = "old";
       const bool ok = applyModelFromTexts(d.st, d.form, std::stoi(v.substr(0, space)), v.substr(space + 1, bar - space - 1),
                                           v.substr(bar + 1), &error);
       show(out, std::to_string(ok) + " " + error);
     }},
    {"aligned", [](Desk& d, const std::string& v, std::ostream& out) {
       std::string error = "old";
       const std::string text = readAlignedFile(d.path(v), &error);
       show(out, text + " | " + error);
     }},
};

class ModelTab : public ::testing::TestWithParam<cases::Case> {};

TEST_P(ModelTab, GivesItsTranscript) { cases::expectTranscript(GetParam(), runDesk(GetParam(), kSteps), false); }

INSTANTIATE_TEST_SUITE_P(, ModelTab, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/model/model.cases")),
                         cases::caseName);

// Exon 1 and the start of intron 1 of human beta-globin against
// epsilon-globin, with gaps, read as pasted; the expected matrices come from
// the model's formulas written out anew over a count of letter pairs.
TEST(Apply, RealAlignmentMatchesTheFormulas) {
  std::string error = "old";
  const std::string beta = readAlignedFile(TRELVANE_TEST_DATA "/model/hbb_beta.aln", &error);
  const std::string eps = readAlignedFile(TRELVANE_TEST_DATA "/model/hbb_epsilon.aln", &error);
  ASSERT_TRUE(error.empty() && beta.size() == 309u && eps.size() == 309u);
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
  ComparisonState st;
  st.open();
  Form form;
  for (int model : {kGeneral, kTsTv}) {
    ASSERT_TRUE(applyModelFromTexts(st, form, model, beta, eps, &error)) << error;
    const float fts = toSingle(ts / (4.0 * n)), ftv = toSingle(tv / (8.0 * n));
    for (int k = 0; k < 16; ++k) {
      const int i = k / 4, j = k % 4;
      const float diag = toSingle(double(of[{L[i], L[i]}]) / n);
      const bool t = transitions.find(std::string{L[i], L[j]}) != std::string::npos;
      EXPECT_EQ(st.matrice[i + 1][j + 1],
                model == kGeneral ? toSingle(double(of[{L[i], L[j]}]) / n)
                                  : toSingle((i == j ? diag : t ? fts : ftv) / (double(diag) + 2.0 * ftv + fts)))
          << model << " " << k;
      // each cell shows the "#.###" text of the matrice cell behind it: first index along the columns, G and C swapped
      EXPECT_EQ(form.cells[k], Format(st.matrice[kGridIndex[j]][kGridIndex[i]], "#.###")) << k;
    }
  }
}

}  // namespace
}  // namespace trelvane::testing
