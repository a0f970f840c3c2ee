// panel_test.cpp -- the routes of a file, CpG mode, the range fields and the window size.
#include "input/panel.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "input/text_fields.h"
#include "temp_files.h"

using namespace trelvane;
using trelvane::testing::TempDir;

namespace {

// A window's input panel with a folder of files.
struct Desk {
  Desk() { st.open(); }
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

class Panel : public ::testing::Test, protected Desk {};

TEST_F(Panel, SequenceFileShowsItsAbsolutePathAndTitle) {
  const std::string path = dir.write("beta globin.fa", ">HUMHBB human beta globin\nACGT\n");
  const auto cwd = std::filesystem::current_path();
  std::filesystem::current_path(dir.path());
  openFile(st, form, Route::BevelButton0, std::string("beta globin.fa"), {});
  std::filesystem::current_path(cwd);
  EXPECT_EQ(form.EditField0, path);
  EXPECT_EQ(form.GBLongCaption, "HUMHBB human beta globin");
  EXPECT_EQ(st.f[0], std::string("beta globin.fa"));
  EXPECT_EQ(form.Message, "Long sequence read 4 bases");
  // the caption comes from a title marker only; a line without one keeps the earlier title
  const std::pair<std::string, std::string> captions[] = {
      {"ACGT\n", "Shortest sequence"}, {"%Mouse\nACGT\n", "Mouse"}, {" >not a title\nACGT\n", "Mouse"},
      {">\nACGT\n", ""}};
  for (const auto& [bytes, want] : captions) {
    open(Route::GBShortDrop, bytes, "s.fa");
    EXPECT_EQ(form.GBShortCaption, want) << bytes;
  }
}

TEST_F(Panel, ResultFileTakesTheShortRoad) {
  longFile();
  const std::string editField = form.EditField0;
  form.PBRUNEnabled = false;
  open(Route::BevelButton0, "trelvane COMPARISON of something\nWindow size=12\nBases=4\n#\nAB", "run.txt");
  EXPECT_EQ(st.windgraph, 12);
  EXPECT_EQ(st.m2.get(0), 'A');
  EXPECT_EQ(graphs, 1);
  EXPECT_EQ(st.f[0], (dir.path() / "run.txt").string());
  EXPECT_EQ(form.EditField0, editField);
  EXPECT_EQ(form.GBLongCaption, "Long one");
  EXPECT_FALSE(form.PBRUNEnabled || form.PBDotEnabled);
  EXPECT_EQ(st.m0.get(0), kA);  // the sequence loaded before stays
  // eighteen characters are no result file: "Trelvane compariso" gives T, A, N, C, A
  open(Route::GBLongDrop, "Trelvane compariso\nACGT\n", "near.txt");
  EXPECT_EQ(graphs, 1);
  EXPECT_EQ(st.nbbases, 9);
}

// Drops need the other side (or CpG mode, for the longest); the dialogs also enable PBDot.
TEST(PanelRoutes, RunAndDotFollowTheRuleOfTheRoute) {
  const struct {
    Route route;
    bool otherLoaded, cpg, wantRun, wantDot;
  } rows[] = {{Route::GBLongDrop, false, false, false, false},  {Route::GBLongDrop, true, false, true, false},
              {Route::GBLongDrop, false, true, true, false},    {Route::BevelButton0, false, false, false, false},
              {Route::BevelButton0, true, false, true, true},   {Route::BevelButton0, false, true, true, true},
              {Route::GBShortDrop, false, false, false, false}, {Route::GBShortDrop, false, true, false, false},
              {Route::GBShortDrop, true, false, true, false},   {Route::BevelButton1, false, true, false, false},
              {Route::BevelButton1, true, false, true, true}};
  for (const auto& r : rows) {
    Desk d;
    const bool longSide = r.route == Route::GBLongDrop || r.route == Route::BevelButton0;
    if (r.otherLoaded) longSide ? d.shortFile() : d.longFile();
    d.form.PBRUNEnabled = d.form.PBDotEnabled = false;
    d.form.CBCPG = r.cpg;
    longSide ? d.longFile(r.route) : d.shortFile(r.route);
    EXPECT_EQ(d.form.PBRUNEnabled, r.wantRun) << int(r.route) << r.otherLoaded << r.cpg;
    EXPECT_EQ(d.form.PBDotEnabled, r.wantDot) << int(r.route) << r.otherLoaded << r.cpg;
  }
}

TEST_F(Panel, NoRouteDisablesAndAFailedLengthCheckEnablesNothing) {
  longFile();
  form.PBRUNEnabled = true;
  longFile(Route::BevelButton0);  // f[1] is nil: the rule does not apply
  EXPECT_TRUE(form.PBRUNEnabled);
  form.PBRUNEnabled = false;
  open(Route::BevelButton1, "ACGTACGTACGTACGT\n", "too long.fa");
  EXPECT_EQ(form.Message, "short sequence longer than long sequence !");
  EXPECT_FALSE(st.f[1]);
  EXPECT_FALSE(form.PBRUNEnabled || form.PBDotEnabled);
  EXPECT_EQ(form.EditField1, (dir.path() / "too long.fa").string());
}

TEST_F(Panel, CancelledOrUnreadableFileChangesNothingElse) {
  shortFile();
  longFile();
  const std::string editField = form.EditField0;
  openFile(st, form, Route::BevelButton0, std::nullopt, [this] { ++graphs; });
  EXPECT_FALSE(st.f[0]);  // a cancelled dialog forgets the file only
  EXPECT_TRUE(form.PBRUNEnabled);
  EXPECT_EQ(form.EditField0, editField);
  EXPECT_EQ(form.Message, "Long sequence read 10 bases");
  longFile();
  const auto loaded = st.f[0];
  openFile(st, form, Route::GBLongDrop, (dir.path() / "nope.fa").string(), {});
  EXPECT_EQ(form.Message, "Cannot read nope.fa: the file does not exist");
  EXPECT_EQ(st.f[0], loaded);
  EXPECT_EQ(st.nbbases, 10);
  openFile(st, form, Route::GBShortDrop, dir.path().string(), {});
  EXPECT_EQ(form.Message, "Cannot read " + dir.path().filename().string() + ": it is a folder, not a file");
  EXPECT_EQ(st.nbbases1, 5);
  EXPECT_EQ(graphs, 0);
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
  EXPECT_EQ(st.nbbases1, 5);
  st.f[0].reset();
  form.CBCPG = true;
  CBCPG_Action(st, form);
  EXPECT_FALSE(form.PBRUNEnabled);
}

TEST_F(Panel, RangeFieldsSetTheResamplings) {
  st.nbbases = 1000;
  form.EFTo = "200";  // edited on the Graphic tab: the start tests this bound, not EFAnaTo
  form.EFAnaFrom = "101";
  EFAnaFrom_TextChange(st, form);
  EXPECT_EQ(form.EFSD, "-101");
  EXPECT_EQ(form.EFTo, "200");
  // field, text: EFFrom or EFTo, EFSD
  const struct { char field; const char *text, *plot, *sd; } rows[] = {
      {'T', "1000", "1000", "899"}, {'T', "500", "500", "399"}, {'T', "MAX", nullptr, "899"},
      {'F', "1.5", "1.5", "998.5"}};
  for (const auto& r : rows) {
    (r.field == 'F' ? form.EFAnaFrom : form.EFAnaTo) = r.text;
    r.field == 'F' ? EFAnaFrom_TextChange(st, form) : EFAnaTo_TextChange(st, form);
    if (r.plot) {
      EXPECT_EQ(r.field == 'F' ? form.EFFrom : form.EFTo, r.plot) << r.text;
    }
    EXPECT_EQ(form.EFSD, r.sd) << r.text;
  }
}

TEST_F(Panel, WindowSizeIsAtMost255) {
  const std::pair<std::string, std::string> rows[] = {
      {"300", "255"}, {"256", "255"}, {"255", "255"}, {"12", "12"}, {"abc", "abc"}};
  for (const auto& [text, want] : rows) {
    form.EFWS = text;
    EFWS_LostFocus(form);
    EXPECT_EQ(form.EFWS, want) << text;
  }
  std::string field = "max";  // setFieldText tells whether the text changed
  EXPECT_FALSE(setFieldText(field, "max"));
  EXPECT_TRUE(setFieldText(field, "1000"));
  EXPECT_EQ(field, "1000");
}

}  // namespace
