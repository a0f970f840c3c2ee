// entry_test.cpp -- the aligned-sequence fields: PupModel kept in step with their lengths, and the key filter.
#include "model/entry.h"

#include <gtest/gtest.h>

#include <string>

#include "model/estimation.h"

namespace trelvane {
namespace {

class Entry : public ::testing::Test {
 protected:
  void type1(const std::string& text) {
    form.SeqModel1 = text;
    SeqModel1_TextChange(form);
  }
  void type2(const std::string& text) {
    form.SeqModel2 = text;
    SeqModel2_TextChange(form);
  }
  void choose(int index) {
    form.PupModelListIndex = index;
    PupModel_Change(st, form);
  }
  void expectPupModel(bool enabled, int index, const std::string& message) {
    EXPECT_EQ(form.PupModelEnabled, enabled);
    EXPECT_EQ(form.PupModelListIndex, index);
    EXPECT_EQ(form.messModel, message);
  }

  ComparisonState st;
  Form form;
};

TEST_F(Entry, TextInFirstFieldOnlyAsksForAlignment) {
  type1("ACGT");
  expectPupModel(false, kIdentity, "The sequences must be aligned");
}

TEST_F(Entry, EqualLengthsEnablePupModel) {
  type1("ACGT");
  type2("AGGT");
  expectPupModel(true, kIdentity, "");
}

TEST_F(Entry, BlanksAndLineEndsCountInTheLength) {
  type1("A C\n");
  type2("ACGT");
  expectPupModel(true, kIdentity, "");
  type2("ACG");
  expectPupModel(false, kIdentity, "The sequences must be aligned");
}

TEST_F(Entry, BothEmptiedOneAfterTheOther) {
  type1("ACGT");
  type2("ACGA");
  choose(kGeneral);
  type1("");
  expectPupModel(false, kIdentity, "The sequences must be aligned");
  type2("");
  expectPupModel(false, kIdentity, "");
}

TEST_F(Entry, OneLetterMoreResetsTheModelUntilTheOtherFieldFollows) {
  type1("ACGT");
  type2("ACGA");
  choose(kTsTv);
  expectPupModel(true, kTsTv, "");
  type1("ACGTA");
  expectPupModel(false, kIdentity, "The sequences must be aligned");
  type2("ACGAG");
  expectPupModel(true, kIdentity, "");
}

TEST_F(Entry, ChangeThatKeepsTheLengthsKeepsTheModel) {
  type1("ACGT");
  type2("ACGA");
  choose(kGeneral);
  type2("TCGA");
  expectPupModel(true, kGeneral, "");
  type1("tcga");
  expectPupModel(true, kGeneral, "");
}

TEST_F(Entry, ChoiceFallsBackToIdentityWhileATextIsEmpty) {
  form.SeqModel1 = "ACGT";
  choose(kTsTv);
  EXPECT_EQ(form.PupModelListIndex, kIdentity);
  form.SeqModel1.clear();
  form.SeqModel2 = "ACGT";
  choose(kGeneral);
  EXPECT_EQ(form.PupModelListIndex, kIdentity);
  form.SeqModel1 = "ACGA";
  choose(kGeneral);
  EXPECT_EQ(form.PupModelListIndex, kGeneral);
  PupModel_Change(form);
  EXPECT_EQ(form.PupModelListIndex, kGeneral);
}

// With PupModel disabled, Apply always means Identity.
TEST_F(Entry, UnalignedTextsMakeApplyAnIdentity) {
  st.open();
  type1("AAAA");
  type2("AAGG");
  choose(kTsTv);
  type1("AAAAA");
  Apply_Action(st, form);
  EXPECT_EQ(st.matrice[kA][kA], 1.0f);
  EXPECT_EQ(st.matrice[kA][kG], 0.0f);
  EXPECT_EQ(st.matrice[kG][kG], 1.0f);
}

TEST(SeqModelKeyDown, BasesOfEitherCaseAndKeysUpToTheBlankPass) {
  for (char key : std::string("ATGCatgc ")) EXPECT_FALSE(SeqModel_KeyDown(key)) << key;
  for (int key = 0; key <= 32; ++key) EXPECT_FALSE(SeqModel_KeyDown(char(key))) << key;
}

TEST(SeqModelKeyDown, EverythingElseIsSwallowed) {
  for (char key : std::string("NnUuXx-.*019!~BDEHKMRSVWYbdhkmrsvwy"))
    EXPECT_TRUE(SeqModel_KeyDown(key)) << key;
  EXPECT_TRUE(SeqModel_KeyDown(char(127)));
  // bytes above 127 are above the blank too, not below it
  EXPECT_TRUE(SeqModel_KeyDown(char(0xC9)));
  EXPECT_TRUE(SeqModel_KeyDown(char(0xFF)));
}

}  // namespace
}  // namespace trelvane
