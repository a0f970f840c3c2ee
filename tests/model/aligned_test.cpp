// aligned_test.cpp -- aligned sequence files read as a paste, and a model applied as a user would.
#include "model/aligned.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "model/estimation.h"

namespace trelvane {
namespace {

TEST(AlignedFile, ReadsWhatAPasteWouldGive) {
  namespace fs = std::filesystem;
  const fs::path dir = fs::temp_directory_path() / ("trelvane_aligned_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  const std::string path = (dir / "a.txt").string(), other = std::string("ac\tNU?\0\xE9-", 9);
  const std::pair<std::string, std::string> rows[] = {
      {">first title\nAC-G\r\n%a note\nTT a\rgg\n>second\n >kept\ncc", "AC-GTT agg >keptcc"},
      {other + "\n", other}, {"", ""}, {">only a title\r\n\r\n", ""}};
  for (const auto& [bytes, want] : rows) {
    std::ofstream(path, std::ios::binary) << bytes;
    std::string error = "old";
    EXPECT_EQ(readAlignedFile(path, &error), want);
    EXPECT_EQ(error, "");
  }
  std::string error;
  const std::string none = (dir / "none.txt").string();
  EXPECT_EQ(readAlignedFile(none, &error), "");
  EXPECT_EQ(error, "cannot read the aligned sequence file " + none + ": the file does not exist");
  EXPECT_EQ(readAlignedFile(dir.string(), &error), "");
  EXPECT_NE(error.find("folder"), std::string::npos) << error;
  fs::remove_all(dir);
}

TEST(ApplyFromTexts, AppliesAlignedTextsAndRefusesTheRestLeavingMatrice) {
  ComparisonState st;
  st.open();
  Form form;
  std::string error = "old";
  EXPECT_FALSE(applyModelFromTexts(st, form, kGeneral, "", "", &error));
  EXPECT_NE(error.find("cannot be chosen"), std::string::npos) << error;
  EXPECT_EQ(st.matrice[kA][kA], 1.0f);
  ASSERT_TRUE(applyModelFromTexts(st, form, kTsTv, "AAAA", "AAGG", &error));
  EXPECT_EQ(error, "");
  EXPECT_TRUE(form.PupModelEnabled);
  EXPECT_EQ(form.PupModelListIndex, kTsTv);
  EXPECT_EQ(st.matrice[kA][kA], 0.8f);
  EXPECT_EQ(form.cells[8], "0.2");
  EXPECT_FALSE(applyModelFromTexts(st, form, kTsTv, "ACGTA", "ACGT", &error));
  EXPECT_EQ(error, "The sequences must be aligned: sequence 1 has 5 characters, sequence 2 has 4");
  EXPECT_EQ(form.messModel, "The sequences must be aligned");
  EXPECT_FALSE(form.PupModelEnabled);
  EXPECT_FALSE(applyModelFromTexts(st, form, kIdentity, "AC", "A", &error));
  for (int index : {-1, 3}) {
    EXPECT_FALSE(applyModelFromTexts(st, form, index, "ACGT", "ACGT", &error));
    EXPECT_NE(error.find("unknown model " + std::to_string(index)), std::string::npos) << error;
  }
  EXPECT_EQ(st.matrice[kA][kA], 0.8f);
  // without any countable pair: the window's not-a-numbers; Identity needs no texts
  ASSERT_TRUE(applyModelFromTexts(st, form, kGeneral, "NN--", "ACGT", &error));
  EXPECT_TRUE(std::isnan(st.matrice[kA][kA]));
  ASSERT_TRUE(applyModelFromTexts(st, form, kIdentity, "", "", &error));
  EXPECT_EQ(st.matrice[kA][kA], 1.0f);
  EXPECT_EQ(st.matrice[kA][kG], 0.0f);
}

}  // namespace
}  // namespace trelvane
