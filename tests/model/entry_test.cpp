// entry_test.cpp -- the aligned-sequence fields: PupModel kept in step with their lengths, and the key filter.
#include "model/entry.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "model/estimation.h"

namespace trelvane {
namespace {

// Scripts of user steps: "1text" or "2text" types text into SeqModel1 or
// SeqModel2, "cT" chooses TS/TV ("cG" General model) in PupModel; after each
// step, the state of PupModel: enabled '+' or not '-', on I(dentity), T(S/TV)
// or G(eneral), message '!' or none '.'.
const std::vector<std::pair<std::string, std::string>> scripts[] = {
    {{"1ACGT", "-I!"}},
    {{"1ACGT", "-I!"}, {"2AGGT", "+I."}},
    {{"1A C\n", "-I!"}, {"2ACGT", "+I."}, {"2ACG", "-I!"}},                  // blanks count
    {{"1ACGT", "-I!"}, {"2ACGA", "+I."}, {"cG", "+G."}, {"1", "-I!"}, {"2", "-I."}},  // both emptied
    {{"1ACGT", "-I!"}, {"2ACGA", "+I."}, {"cT", "+T."}, {"1ACGTA", "-I!"}, {"2ACGAG", "+I."}},
    {{"1ACGT", "-I!"}, {"2ACGA", "+I."}, {"cG", "+G."}, {"2TCGA", "+G."}, {"1tcga", "+G."}},
};

TEST(Entry, PupModelFollowsTheLengthsOfTheTexts) {
  const std::string models = "ITG";
  for (const auto& script : scripts) {
    ComparisonState st;
    Form form;
    for (const auto& [step, want] : script) {
      SCOPED_TRACE(script.front().first + " .. " + step);
      const std::string text = step.substr(1);
      if (step[0] == '1') form.SeqModel1 = text, SeqModel1_TextChange(form);
      if (step[0] == '2') form.SeqModel2 = text, SeqModel2_TextChange(form);
      if (step[0] == 'c') form.PupModelListIndex = int(models.find(text)), PupModel_Change(st, form);
      EXPECT_EQ(form.PupModelEnabled, want[0] == '+');
      EXPECT_EQ(form.PupModelListIndex, int(models.find(want[1])));
      EXPECT_EQ(form.messModel, want[2] == '!' ? "The sequences must be aligned" : "");
    }
  }
}

TEST(Entry, ChoiceFallsBackToIdentityWhileATextIsEmpty) {
  ComparisonState st;
  Form form;
  const struct { const char *s1, *s2; int want; } rows[] = {
      {"ACGT", "", kIdentity}, {"", "ACGT", kIdentity}, {"ACGA", "ACGT", kGeneral}};
  for (const auto& row : rows) {
    form.SeqModel1 = row.s1, form.SeqModel2 = row.s2, form.PupModelListIndex = kGeneral;
    PupModel_Change(st, form);
    EXPECT_EQ(form.PupModelListIndex, row.want) << row.s1 << "/" << row.s2;
  }
  PupModel_Change(form);
  EXPECT_EQ(form.PupModelListIndex, kGeneral);
}

// With PupModel disabled, Apply always means Identity.
TEST(Entry, UnalignedTextsMakeApplyAnIdentity) {
  ComparisonState st;
  st.open();
  Form form;
  form.SeqModel1 = "AAAA", SeqModel1_TextChange(form);
  form.SeqModel2 = "AAGG", SeqModel2_TextChange(form);
  form.PupModelListIndex = kTsTv, PupModel_Change(st, form);
  form.SeqModel1 = "AAAAA", SeqModel1_TextChange(form);
  Apply_Action(st, form);
  EXPECT_EQ(st.matrice[kA][kA], 1.0f);
  EXPECT_EQ(st.matrice[kA][kG], 0.0f);
}

TEST(Entry, KeyFilterPassesBasesAndKeysUpToTheBlank) {
  for (int key = 0; key <= 32; ++key) EXPECT_FALSE(SeqModel_KeyDown(char(key))) << key;
  for (char key : std::string("ATGCatgc")) EXPECT_FALSE(SeqModel_KeyDown(key)) << key;
  // bytes above 127 are above the blank too, not below it
  for (char key : std::string("NnUuXx-.*019!~BDEHKMRSVWYbdhkmrsvwy\x7f\xc9\xff"))
    EXPECT_TRUE(SeqModel_KeyDown(key)) << int(key);
}

}  // namespace
}  // namespace trelvane
