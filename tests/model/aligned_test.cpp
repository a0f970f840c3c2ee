// aligned_test.cpp -- aligned sequence files read as a paste, and a model applied as a user would.
#include "model/aligned.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include "model/entry.h"
#include "model/estimation.h"

namespace trelvane {
namespace {

namespace fs = std::filesystem;

// A file of the given bytes in a folder of this test's own, removed at the end.
class AlignedFile : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir = fs::temp_directory_path() /
          ("trelvane_model_" + std::string(info->name()) + "_" + std::to_string(::getpid()));
    fs::create_directories(dir);
  }
  void TearDown() override { fs::remove_all(dir); }

  std::string write(const std::string& name, const std::string& bytes) {
    std::string path = (dir / name).string();
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }

  fs::path dir;
};

TEST_F(AlignedFile, JoinsSequenceLinesAndLeavesTitlesOut) {
  std::string error = "old";
  std::string text = readAlignedFile(
      write("a.txt", ">first title\nAC-G\r\n%a note\nTT a\rgg\n>second\n >kept\ncc"), &error);
  EXPECT_EQ(text, "AC-GTT agg >keptcc");
  EXPECT_EQ(error, "");
}

TEST_F(AlignedFile, KeepsEveryOtherByte) {
  std::string bytes = std::string("ac\tNU?", 6) + std::string(1, '\0') + "\xE9-";
  EXPECT_EQ(readAlignedFile(write("b.txt", bytes + "\n"), nullptr), bytes);
}

TEST_F(AlignedFile, EmptyOrTitleOnlyFileGivesAnEmptyText) {
  std::string error;
  EXPECT_EQ(readAlignedFile(write("empty.txt", ""), &error), "");
  EXPECT_EQ(error, "");
  EXPECT_EQ(readAlignedFile(write("title.txt", ">only a title\r\n\r\n"), &error), "");
  EXPECT_EQ(error, "");
}

TEST_F(AlignedFile, MissingFileOrFolderIsAnError) {
  std::string error;
  std::string missing = (dir / "none.txt").string();
  EXPECT_EQ(readAlignedFile(missing, &error), "");
  EXPECT_NE(error.find(missing), std::string::npos) << error;
  EXPECT_NE(error.find("does not exist"), std::string::npos) << error;
  error.clear();
  EXPECT_EQ(readAlignedFile(dir.string(), &error), "");
  EXPECT_NE(error.find("folder"), std::string::npos) << error;
}

class ApplyFromTexts : public ::testing::Test {
 protected:
  void SetUp() override { st.open(); }
  ComparisonState st;
  Form form;
  std::string error;
};

TEST_F(ApplyFromTexts, AlignedFilesGiveTheMatrixOfTheWindow) {
  std::string beta = readAlignedFile(TRELVANE_TEST_DATA "/model/hbb_beta.aln", &error);
  std::string epsilon = readAlignedFile(TRELVANE_TEST_DATA "/model/hbb_epsilon.aln", &error);
  ASSERT_EQ(error, "");
  ASSERT_EQ(beta.size(), 309u);
  EXPECT_EQ(beta.substr(0, 12), "ACACTTTCTTCT");
  EXPECT_EQ(epsilon.substr(0, 12), "--TC-TGCTTCC");

  ASSERT_TRUE(applyModelFromTexts(st, form, kTsTv, beta, epsilon, &error)) << error;
  EXPECT_EQ(error, "");
  EXPECT_TRUE(form.PupModelEnabled);
  EXPECT_EQ(form.PupModelListIndex, kTsTv);
  EXPECT_EQ(form.messModel, "");

  // the same steps by hand, as the window takes them
  ComparisonState byHand;
  byHand.open();
  Form window;
  window.SeqModel1 = beta;
  window.SeqModel2 = epsilon;
  window.PupModelListIndex = kTsTv;
  Apply_Action(byHand, window);
  for (int i = 0; i <= 4; ++i)
    for (int j = 0; j <= 4; ++j) EXPECT_EQ(st.matrice[i][j], byHand.matrice[i][j]) << i << j;
  EXPECT_EQ(form.cells, window.cells);
  EXPECT_EQ(form.Somme, window.Somme);
  EXPECT_NE(st.matrice[kA][kG], 0.0f);
}

TEST_F(ApplyFromTexts, TextsOfDifferentLengthsAreRefused) {
  ASSERT_TRUE(applyModelFromTexts(st, form, kGeneral, "ACGT", "ACGT", &error));
  EXPECT_FALSE(applyModelFromTexts(st, form, kTsTv, "ACGTA", "ACGT", &error));
  EXPECT_EQ(error, "The sequences must be aligned: sequence 1 has 5 characters, sequence 2 has 4");
  EXPECT_EQ(st.matrice[kA][kA], 0.25f);  // left as the last Apply set it
  EXPECT_EQ(form.messModel, "The sequences must be aligned");
  EXPECT_FALSE(form.PupModelEnabled);
  EXPECT_FALSE(applyModelFromTexts(st, form, kIdentity, "AC", "A", &error));
}

TEST_F(ApplyFromTexts, ModelThatCannotBeChosenIsRefused) {
  EXPECT_FALSE(applyModelFromTexts(st, form, kGeneral, "", "", &error));
  EXPECT_NE(error.find("cannot be chosen"), std::string::npos) << error;
  EXPECT_EQ(st.matrice[kA][kA], 1.0f);
  EXPECT_EQ(form.cells[0], "1");
  for (int index : {-1, 3}) {
    error.clear();
    EXPECT_FALSE(applyModelFromTexts(st, form, index, "ACGT", "ACGT", &error));
    EXPECT_NE(error.find("unknown model " + std::to_string(index)), std::string::npos) << error;
  }
}

TEST_F(ApplyFromTexts, IdentityNeedsNoTextsAndReplacesAnEarlierModel) {
  ASSERT_TRUE(applyModelFromTexts(st, form, kTsTv, "AAAA", "AAGG", &error));
  EXPECT_EQ(st.matrice[kA][kA], 0.8f);
  ASSERT_TRUE(applyModelFromTexts(st, form, kIdentity, "AAAA", "AAGG", &error));
  EXPECT_EQ(form.PupModelListIndex, kIdentity);
  EXPECT_EQ(st.matrice[kA][kA], 1.0f);
  EXPECT_EQ(st.matrice[kA][kG], 0.0f);
  ASSERT_TRUE(applyModelFromTexts(st, form, kIdentity, "", "", &error));
  EXPECT_EQ(form.Somme[0], "1");
}

TEST_F(ApplyFromTexts, TextsWithoutAnyPairGiveNotANumbersAsInTheWindow) {
  ASSERT_TRUE(applyModelFromTexts(st, form, kGeneral, "NN--", "ACGT", &error));
  EXPECT_TRUE(std::isnan(st.matrice[kA][kA]));
  EXPECT_EQ(form.cells[0], "NaN");
}

}  // namespace
}  // namespace trelvane
