// run_test.cpp -- runs started from the window: stages, results, clipboard, Stop, a window closed mid-run,
// two windows running at once.
#include <QCheckBox>
#include <QClipboard>
#include <QFileInfo>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>

#include <vector>

#include "shell_fixture.h"

namespace trelvane::shell::test {
namespace {

using Texts = std::vector<std::string>;

// HUMHBB against V00508 over 18001 to 22000 with 2000 resamplings, seed 1,
// typed into a window as a user would, the clipboard on; with a result path,
// the result file too.
void prepareS1(Window1& win, const std::string& resultPath = "") {
  win.runSeed = [] { return uint64_t{1}; };
  for (auto [side, name] : {std::pair{0, "HUMHBB.fa"}, {1, "V00508.fa"}}) {
    win.openDialog = [name] { return std::optional(examplePath(name)); };
    side ? win.BevelButton1_Action() : win.BevelButton0_Action();
  }
  const auto type = [&win](const char* name, const char* text) {
    auto* e = win.content()->findChild<QLineEdit*>(QString::fromLatin1(name));
    e->selectAll();
    QTest::keyClicks(e, QString::fromLatin1(text));
  };
  type("EFAnaFrom", "18001");
  type("EFAnaTo", "22000");
  win.TabPanel1->setCurrentIndex(4);
  type("EFSD", "2000");
  win.TabPanel1->setCurrentIndex(0);
  win.content()->findChild<QCheckBox*>("CBClipboard")->click();
  if (resultPath.empty()) return;
  win.content()->findChild<QCheckBox*>("CBFile")->click();
  win.saveDialog = [resultPath] { return std::optional(resultPath); };
}

bool ended(Window1& win) { return !win.state().running && win.PBRUN->text() == "Run"; }

class Runs : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    w().messageShown = [this](const std::string& text) { messages_.push_back(text); };
  }
  Texts messages_;
};

TEST_F(Runs, AWholeRunShowsItsStagesAndGivesTheReportClipboardAndFile) {
  const std::string out = tempPath("Output.txt");
  prepareS1(w(), out);
  w().PBRUN->click();
  EXPECT_EQ(w().PBRUN->text(), "Stop");
  EXPECT_TRUE(!w().TabPanel1->isEnabled() && w().PBRUN->isEnabled());
  ASSERT_TRUE(waitFor([&] { return ended(w()); }));
  EXPECT_EQ(messages_, (Texts{"Show sequences", "Computing...", "Estimate of SD", "Preparing the output...",
                              "Writing the output...", "Drawing picture...", "End..."}));
  EXPECT_EQ(w().Message->text(), "End...");
  EXPECT_TRUE(w().TabPanel1->isEnabled() && !w().state().askclose);
  EXPECT_EQ(w().form().Results, readBytes(goldenPath("S1.report")));
  EXPECT_EQ(w().Results->toPlainText().toStdString(), readBytes(goldenPath("S1.report")));
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), readBytes(goldenPath("S1.rows")));
  EXPECT_EQ(readBytes(out), readBytes(goldenPath("S1.result")));
  EXPECT_EQ(w().state().windgraph, 30);
  EXPECT_EQ(w().ProgressBar1->maximum(), w().ProgressBar1->width());
  EXPECT_GT(w().ProgressBar1->value(), 0);
  w().TabPanel1->setCurrentIndex(3);  // drawn when Graphic opens
  EXPECT_NE(w().state().pct, nullptr);
  EXPECT_TRUE(w().PBDot->isEnabled());
}

// The click on Stop is taken at the run's first yield, in the first scan;
// the panel is disabled meanwhile: a drop on it is not taken.
TEST_F(Runs, StopDuringTheFirstScanEndsAfterTheFirstResampling) {
  const std::string out = tempPath("Output.txt");
  prepareS1(w(), out);
  QGuiApplication::clipboard()->setText(QStringLiteral("held before"));
  std::atomic<bool> clicked{false};
  bool dropTaken = true;
  const std::string other = temp("other.fa", kShort);
  QPointer<Window1> target = window_;
  w().workerYield = [&, target] {
    if (clicked.exchange(true)) return;
    QMetaObject::invokeMethod(target, [&, target] {
          dropTaken = dropOn(target->GBShort, fileUrl(other));
          target->PBRUN->click();
        }, Qt::BlockingQueuedConnection);
  };
  w().PBRUN->click();
  ASSERT_TRUE(waitFor([&] { return ended(w()); }));
  EXPECT_EQ(messages_, (Texts{"Show sequences", "Computing...", "Stopping...", "Estimate of SD", "End..."}));
  EXPECT_FALSE(dropTaken);
  EXPECT_EQ(w().state().nbbases1, 3919);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "held before");
  EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(out)));
  EXPECT_EQ(w().state().windgraph, 0);  // the results of a stopped run are not taken
  EXPECT_TRUE(w().state().changegraph);
  EXPECT_EQ(w().form().Results.find("Average identity:"), std::string::npos);
  EXPECT_TRUE(w().TabPanel1->isEnabled() && !w().state().askclose);
}

// Closed, then gone at once (as its deferred deletion would make it), before the run goes on.
TEST_F(Runs, ClosingTheWindowDuringARunStopsItHarmlessly) {
  prepareS1(w());
  QGuiApplication::clipboard()->setText(QStringLiteral("held before"));
  std::shared_ptr<ComparisonState> st = w().sharedState();
  std::atomic<bool> asked{false}, closed{false};
  QPointer<Window1> target = window_;
  w().workerYield = [&asked, &closed, target] {
    if (asked.exchange(true)) return;
    QMetaObject::invokeMethod(target, [&closed, target] {
          target->close();
          delete target.data();
          closed = true;
        }, Qt::BlockingQueuedConnection);
  };
  w().PBRUN->click();
  ASSERT_TRUE(waitFor([&] { return closed.load(); }));
  EXPECT_TRUE(st->askclose);
  runthreads::joinAll();
  QCoreApplication::processEvents();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(window_);
  EXPECT_EQ(runthreads::active(), 0);
  EXPECT_EQ(st->m2.size(), 73308 + 410);  // as if stopped: a new, partly written m2 and no results
  EXPECT_EQ(st->windgraph, 0);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "held before");
  EXPECT_EQ(messages_.back(), "Computing...");  // what came after was dropped with the window
}

// Both runs under way together; each ends with the report of a run of its
// own, and neither window's results reach the other.
class TwoWindows : public ShellTest {};

TEST_F(TwoWindows, RunsStartedInTwoWindowsAtOnceEachGiveTheirOwnReport) {
  auto second = std::make_unique<Window1>();
  second->show();
  const std::string first = tempPath("first.result"), other = tempPath("second.result");
  prepareS1(w(), first);
  prepareS1(*second, other);
  w().PBRUN->click();
  second->PBRUN->click();
  EXPECT_TRUE(w().state().running && second->state().running);
  EXPECT_NE(&w().state(), &second->state());
  ASSERT_TRUE(waitFor([&] { return ended(w()) && ended(*second); }));
  for (Window1* win : {&w(), second.get()}) {
    EXPECT_EQ(win->form().Results, readBytes(goldenPath("S1.report")));
    EXPECT_EQ(win->state().windgraph, 30);
  }
  EXPECT_EQ(readBytes(first), readBytes(goldenPath("S1.result")));
  EXPECT_EQ(readBytes(other), readBytes(goldenPath("S1.result")));
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), readBytes(goldenPath("S1.rows")));
  second->close();
}

}  // namespace
}  // namespace trelvane::shell::test
