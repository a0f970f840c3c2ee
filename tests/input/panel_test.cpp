// panel_test.cpp -- the routes of a file, CpG mode, the range fields and the window size.
#include "input/panel.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "input/text_fields.h"
#include "temp_files.h"

using namespace trelvane;
using trelvane::testing::TempDir;

namespace {

class Panel : public ::testing::Test {
 protected:
  Panel() { st.open(); }

  void open(Route route, const std::string& bytes, const std::string& name) {
    openFile(st, form, route, dir.write(name, bytes), [this] { ++graphs; });
  }
  void longFile(Route route = Route::GBLongDrop) { open(route, ">Long one\nACGTACGTAC\n", "l.fa"); }
  void shortFile(Route route = Route::GBShortDrop) { open(route, ">Short one\nACGTA\n", "s.fa"); }

  TempDir dir;
  ComparisonState st;
  Form form;
  int graphs = 0;
};

}  // namespace

TEST_F(Panel, SequenceFileShowsItsAbsolutePathAndTitle) {
  const std::string path = dir.write("beta globin.fa", ">HUMHBB human beta globin\nACGT\n");
  const std::string cwd = std::filesystem::current_path().string();
  std::filesystem::current_path(dir.path());
  openFile(st, form, Route::BevelButton0, std::string("beta globin.fa"), {});
  std::filesystem::current_path(cwd);

  EXPECT_EQ(form.EditField0, path);
  EXPECT_EQ(form.GBLongCaption, "HUMHBB human beta globin");
  EXPECT_EQ(st.f[0], std::string("beta globin.fa"));
  EXPECT_EQ(st.nbbases, 4);
  EXPECT_EQ(form.Message, "Long sequence read 4 bases");
  EXPECT_EQ(form.EditField1, "Drop a sequence file or output file");
}

TEST_F(Panel, CaptionComesFromATitleMarkerOnly) {
  open(Route::GBShortDrop, "ACGT\n", "plain.fa");
  EXPECT_EQ(form.GBShortCaption, "Shortest sequence");
  open(Route::GBShortDrop, "%Mouse\nACGT\n", "pct.fa");
  EXPECT_EQ(form.GBShortCaption, "Mouse");
  open(Route::GBShortDrop, " >not a title\nACGT\n", "blank.fa");
  EXPECT_EQ(form.GBShortCaption, "Mouse");  // an earlier title stays
  open(Route::GBShortDrop, ">\nACGT\n", "empty.fa");
  EXPECT_EQ(form.GBShortCaption, "");
  EXPECT_EQ(form.GBLongCaption, "Longest sequence");
}

TEST_F(Panel, ResultFileTakesTheShortRoad) {
  longFile();
  const std::string editField = form.EditField0;
  form.PBRUNEnabled = false;
  open(Route::BevelButton0, "trelvane COMPARISON of something\nWindow size=12\nBases=4\n#\nAB",
       "run.txt");
  EXPECT_EQ(st.windgraph, 12);
  EXPECT_EQ(st.nbbases, 4);
  EXPECT_EQ(st.m2.get(0), 'A');
  EXPECT_EQ(graphs, 1);
  EXPECT_EQ(st.f[0], (dir.path() / "run.txt").string());
  EXPECT_EQ(form.EditField0, editField);
  EXPECT_EQ(form.GBLongCaption, "Long one");
  EXPECT_FALSE(form.PBRUNEnabled);
  EXPECT_FALSE(form.PBDotEnabled);
  EXPECT_EQ(st.m0.get(0), kA);  // the sequence loaded before stays
}

TEST_F(Panel, EighteenCharactersAreNoResultFile) {
  open(Route::GBLongDrop, "Trelvane compariso\nACGT\n", "near.txt");
  EXPECT_EQ(graphs, 0);
  // "Trelvane compariso" gives its own bases: T, A, N, C, A.
  EXPECT_EQ(st.nbbases, 9);
  EXPECT_EQ(form.EditField0, (dir.path() / "near.txt").string());
}

struct EnablingCase {
  const char* name;
  Route route;
  bool otherLoaded;
  bool cpg;
  bool wantRun;
  bool wantDot;
};

class PanelEnabling : public Panel, public ::testing::WithParamInterface<EnablingCase> {};

TEST_P(PanelEnabling, FollowsTheRuleOfTheRoute) {
  const EnablingCase& c = GetParam();
  const bool longSide = c.route == Route::GBLongDrop || c.route == Route::BevelButton0;
  if (c.otherLoaded) {
    if (longSide) shortFile(); else longFile();
  }
  form.PBRUNEnabled = form.PBDotEnabled = false;
  form.CBCPG = c.cpg;
  if (longSide) longFile(c.route); else shortFile(c.route);
  EXPECT_EQ(form.PBRUNEnabled, c.wantRun);
  EXPECT_EQ(form.PBDotEnabled, c.wantDot);
}

INSTANTIATE_TEST_SUITE_P(
    Routes, PanelEnabling,
    ::testing::Values(
        EnablingCase{"LongDropAlone", Route::GBLongDrop, false, false, false, false},
        EnablingCase{"LongDropWithShort", Route::GBLongDrop, true, false, true, false},
        EnablingCase{"LongDropInCpgMode", Route::GBLongDrop, false, true, true, false},
        EnablingCase{"LongDialogAlone", Route::BevelButton0, false, false, false, false},
        EnablingCase{"LongDialogWithShort", Route::BevelButton0, true, false, true, true},
        EnablingCase{"LongDialogInCpgMode", Route::BevelButton0, false, true, true, true},
        EnablingCase{"ShortDropAlone", Route::GBShortDrop, false, false, false, false},
        EnablingCase{"ShortDropIgnoresCpgMode", Route::GBShortDrop, false, true, false, false},
        EnablingCase{"ShortDropWithLong", Route::GBShortDrop, true, false, true, false},
        EnablingCase{"ShortDialogAlone", Route::BevelButton1, false, true, false, false},
        EnablingCase{"ShortDialogWithLong", Route::BevelButton1, true, false, true, true}),
    [](const ::testing::TestParamInfo<EnablingCase>& info) { return info.param.name; });

TEST_F(Panel, NoRouteDisablesAndAFailedLengthCheckEnablesNothing) {
  longFile();
  form.PBRUNEnabled = true;
  longFile(Route::BevelButton0);  // f[1] is nil: the rule does not apply
  EXPECT_TRUE(form.PBRUNEnabled);

  form.PBRUNEnabled = false;
  open(Route::BevelButton1, "ACGTACGTACGTACGT\n", "too long.fa");
  EXPECT_EQ(form.Message, "short sequence longer than long sequence !");
  EXPECT_FALSE(st.f[1]);
  EXPECT_FALSE(form.PBRUNEnabled);
  EXPECT_FALSE(form.PBDotEnabled);
  EXPECT_EQ(form.EditField1, (dir.path() / "too long.fa").string());
}

TEST_F(Panel, CancelledDialogForgetsTheFileOnly) {
  shortFile();
  longFile();
  ASSERT_TRUE(form.PBRUNEnabled);
  const std::string editField = form.EditField0;
  openFile(st, form, Route::BevelButton0, std::nullopt, [this] { ++graphs; });
  EXPECT_FALSE(st.f[0]);
  EXPECT_TRUE(form.PBRUNEnabled);
  EXPECT_EQ(st.nbbases, 10);
  EXPECT_EQ(form.EditField0, editField);
  EXPECT_EQ(form.Message, "Long sequence read 10 bases");
  EXPECT_EQ(graphs, 0);
}

TEST_F(Panel, UnreadableFileIsRefusedBeforeAnythingChanges) {
  longFile();
  const auto loaded = st.f[0];
  openFile(st, form, Route::GBLongDrop, (dir.path() / "nope.fa").string(), {});
  EXPECT_EQ(form.Message, "Cannot read nope.fa: the file does not exist");
  EXPECT_EQ(st.f[0], loaded);
  EXPECT_EQ(st.nbbases, 10);
  openFile(st, form, Route::GBShortDrop, dir.path().string(), {});
  EXPECT_EQ(form.Message.rfind("Cannot read ", 0), 0u);
  EXPECT_NE(form.Message.find(": it is a folder, not a file"), std::string::npos);
  EXPECT_FALSE(st.f[1]);
}

TEST_F(Panel, CpgModeEnablesRunForTheLongestSideAlone) {
  longFile();
  form.CBCPG = true;
  CBCPG_Action(st, form);
  EXPECT_TRUE(form.PBRUNEnabled);
  EXPECT_FALSE(form.GBShortVisible);

  shortFile();
  form.CBCPG = false;
  CBCPG_Action(st, form);
  EXPECT_FALSE(form.PBRUNEnabled);  // until the tab changes
  EXPECT_TRUE(form.GBShortVisible);
  EXPECT_TRUE(st.f[1]);
  EXPECT_EQ(st.nbbases1, 5);

  st.f[0].reset();
  form.CBCPG = true;
  CBCPG_Action(st, form);
  EXPECT_FALSE(form.PBRUNEnabled);
}

TEST_F(Panel, RangeFieldsSetTheResamplings) {
  st.nbbases = 1000;
  form.EFAnaFrom = "101";
  EFAnaFrom_TextChange(st, form);
  EXPECT_EQ(form.EFFrom, "101");
  EXPECT_EQ(form.EFSD, "899");

  form.EFAnaTo = "500";
  EFAnaTo_TextChange(st, form);
  EXPECT_EQ(form.EFTo, "500");
  EXPECT_EQ(form.EFSD, "399");

  form.EFAnaTo = "MAX";
  EFAnaTo_TextChange(st, form);
  EXPECT_EQ(form.EFSD, "899");

  form.EFAnaFrom = "1.5";
  EFAnaFrom_TextChange(st, form);
  EXPECT_EQ(form.EFSD, "998.5");
}

TEST_F(Panel, StartOfRangeTestsThePlotBoundNotTheEndOfRange) {
  st.nbbases = 1000;
  form.EFTo = "200";  // edited on the Graphic tab; EFAnaTo is still "max"
  form.EFAnaFrom = "101";
  EFAnaFrom_TextChange(st, form);
  EXPECT_EQ(form.EFSD, "-101");
  EXPECT_EQ(form.EFTo, "200");
}

TEST_F(Panel, WindowSizeIsAtMost255) {
  for (auto [text, want] : {std::pair{"300", "255"}, std::pair{"256", "255"},
                            std::pair{"255", "255"}, std::pair{"12", "12"},
                            std::pair{"abc", "abc"}}) {
    form.EFWS = text;
    EFWS_LostFocus(form);
    EXPECT_EQ(form.EFWS, want) << text;
  }
}

TEST(TextFields, TellsWhetherTheTextChanged) {
  std::string field = "max";
  EXPECT_FALSE(setFieldText(field, "max"));
  EXPECT_TRUE(setFieldText(field, "1000"));
  EXPECT_EQ(field, "1000");
}
