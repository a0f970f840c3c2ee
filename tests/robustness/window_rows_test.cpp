// window_rows_test.cpp -- the window's rows: two windows running at once, each on its own comparison.
#include <QCheckBox>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

#include <memory>

#include "shell_fixture.h"

namespace trelvane::shell::test {
namespace {

class TwoWindows : public ShellTest {
 protected:
  // S1, typed into a window as a user would: HUMHBB against V00508 over
  // 18001 to 22000 with 2000 resamplings, seed 1, rows to the clipboard and
  // the result file to resultPath.
  static void prepareS1(Window1& win, const std::string& resultPath) {
    win.runSeed = [] { return uint64_t{1}; };
    win.openDialog = [] { return std::optional<std::string>(examplePath("HUMHBB.fa")); };
    win.BevelButton0_Action();
    win.openDialog = [] { return std::optional<std::string>(examplePath("V00508.fa")); };
    win.BevelButton1_Action();
    auto type = [&win](const char* name, const char* text) {
      auto* e = win.content()->findChild<QLineEdit*>(QString::fromLatin1(name));
      ASSERT_NE(e, nullptr) << name;
      e->selectAll();
      QTest::keyClicks(e, QString::fromLatin1(text));
    };
    win.content()->findChild<QCheckBox*>("CBClipboard")->click();
    win.content()->findChild<QCheckBox*>("CBFile")->click();
    win.saveDialog = [resultPath] { return std::optional<std::string>(resultPath); };
    type("EFAnaFrom", "18001");
    type("EFAnaTo", "22000");
    win.TabPanel1->setCurrentIndex(4);
    type("EFSD", "2000");
    win.TabPanel1->setCurrentIndex(0);
  }
};

// Both runs are under way together; each ends with the report of a run of
// its own, and neither window's results reach the other.
TEST_F(TwoWindows, RunsStartedInTwoWindowsAtOnceEachGiveTheirOwnReport) {
  auto second = std::make_unique<Window1>();
  second->show();
  const std::string first = tempPath("first.result"), other = tempPath("second.result");
  prepareS1(w(), first);
  prepareS1(*second, other);
  ASSERT_TRUE(w().PBRUN->isEnabled());
  ASSERT_TRUE(second->PBRUN->isEnabled());

  w().PBRUN->click();
  second->PBRUN->click();
  EXPECT_EQ(w().PBRUN->text(), "Stop");
  EXPECT_EQ(second->PBRUN->text(), "Stop");
  EXPECT_TRUE(w().state().running);
  EXPECT_TRUE(second->state().running);
  EXPECT_NE(&w().state(), &second->state());

  auto ended = [](Window1& win) { return !win.state().running && win.PBRUN->text() == "Run"; };
  ASSERT_TRUE(waitFor([&] { return ended(w()) && ended(*second); }));
  const std::string s1 = readBytes(goldenPath("S1.report"));
  EXPECT_EQ(w().form().Results, s1);
  EXPECT_EQ(second->form().Results, s1);
  EXPECT_EQ(readBytes(first), readBytes(goldenPath("S1.result")));
  EXPECT_EQ(readBytes(other), readBytes(goldenPath("S1.result")));
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), readBytes(goldenPath("S1.rows")));
  EXPECT_EQ(w().state().windgraph, 30);
  EXPECT_EQ(second->state().windgraph, 30);
  EXPECT_TRUE(w().TabPanel1->isEnabled());
  EXPECT_TRUE(second->TabPanel1->isEnabled());
  second->close();
}

}  // namespace
}  // namespace trelvane::shell::test
