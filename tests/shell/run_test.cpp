// run_test.cpp -- runs started from the window: stages, results, clipboard, Stop, and a window closed mid-run.
#include <QCheckBox>
#include <QClipboard>
#include <QFileInfo>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>

#include <vector>

#include "shell/widgets.h"
#include "shell_fixture.h"

namespace trelvane::shell::test {
namespace {

class Runs : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    w().messageShown = [this](const std::string& text) { messages_.push_back(text); };
    w().runSeed = [] { return uint64_t{1}; };
  }
  // HUMHBB against V00508 over 18001 to 22000 with 2000 resamplings, typed
  // as a user would, the clipboard on; with file, the result file too (its path returned).
  std::string prepareS1(bool file) {
    choose(0, examplePath("HUMHBB.fa"));
    choose(1, examplePath("V00508.fa"));
    typeInto("EFAnaFrom", "18001");
    typeInto("EFAnaTo", "22000");
    w().TabPanel1->setCurrentIndex(4);
    typeInto("EFSD", "2000");
    w().TabPanel1->setCurrentIndex(0);
    EXPECT_TRUE(w().PBRUN->isEnabled());
    find<QCheckBox>("CBClipboard")->click();
    if (!file) return {};
    find<QCheckBox>("CBFile")->click();
    const std::string out = tempPath("Output.txt");
    w().saveDialog = [out] { return std::optional<std::string>(out); };
    return out;
  }
  bool runEnded() { return !w().state().running && w().PBRUN->text() == "Run"; }

  std::vector<std::string> messages_;
};

TEST_F(Runs, AWholeRunShowsItsStagesAndGivesTheReportClipboardAndFile) {
  const std::string out = prepareS1(true);
  w().PBRUN->click();
  EXPECT_EQ(w().PBRUN->text(), "Stop");
  EXPECT_FALSE(w().TabPanel1->isEnabled());
  EXPECT_TRUE(w().PBRUN->isEnabled());
  ASSERT_TRUE(waitFor([&] { return runEnded(); }));

  EXPECT_EQ(messages_, (std::vector<std::string>{"Show sequences", "Computing...", "Estimate of SD",
                                                "Preparing the output...", "Writing the output...",
                                                "Drawing picture...", "End..."}));
  EXPECT_EQ(w().Message->text(), "End...");
  EXPECT_TRUE(w().TabPanel1->isEnabled());
  EXPECT_FALSE(w().state().askclose);
  EXPECT_EQ(w().form().Results, readBytes(goldenPath("S1.report")));
  EXPECT_EQ(w().Results->toPlainText().toStdString(), readBytes(goldenPath("S1.report")));
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), readBytes(goldenPath("S1.rows")));
  EXPECT_EQ(readBytes(out), readBytes(goldenPath("S1.result")));
  EXPECT_EQ(w().state().windgraph, 30);
  EXPECT_EQ(w().ProgressBar1->maximum(), w().ProgressBar1->width());
  EXPECT_GT(w().ProgressBar1->value(), 0);
  // The run's result is drawn when Graphic opens.
  w().TabPanel1->setCurrentIndex(3);
  EXPECT_NE(w().state().pct, nullptr);
  EXPECT_TRUE(w().PBDot->isEnabled());
}

TEST_F(Runs, StopDuringTheFirstScanEndsAfterTheFirstResampling) {
  const std::string out = prepareS1(true);
  QGuiApplication::clipboard()->setText(QStringLiteral("held before"));
  // The click on Stop is taken at the run's first yield, in the first scan.
  std::atomic<bool> clicked{false};
  bool dropTaken = true;
  const std::string other = temp("other.fa", ">other\nACGTACGTACGTACGTACGTACGTACGTACGTACGTACGT\n");
  QPointer<Window1> target = window_;
  w().workerYield = [&, target] {
    if (clicked.exchange(true)) return;
    QMetaObject::invokeMethod(
        target,
        [&, target] {
          // The panel is disabled: a drop on it is not taken.
          dropTaken = dropOn(target->GBShort, {QUrl::fromLocalFile(QString::fromStdString(other))});
          target->PBRUN->click();
        },
        Qt::BlockingQueuedConnection);
  };
  w().PBRUN->click();
  ASSERT_TRUE(waitFor([&] { return runEnded(); }));

  EXPECT_EQ(messages_, (std::vector<std::string>{"Show sequences", "Computing...", "Stopping...", "Estimate of SD",
                                                "End..."}));
  EXPECT_FALSE(dropTaken);
  EXPECT_EQ(w().state().nbbases1, 3919);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "held before");
  EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(out)));
  EXPECT_EQ(w().state().windgraph, 0);  // the results of a stopped run are not taken
  EXPECT_TRUE(w().state().changegraph);
  EXPECT_EQ(w().form().Results.find("Average identity:"), std::string::npos);
  EXPECT_EQ(w().PBRUN->text(), "Run");
  EXPECT_TRUE(w().TabPanel1->isEnabled());
  EXPECT_FALSE(w().state().askclose);
}

TEST_F(Runs, ClosingTheWindowDuringARunStopsItHarmlessly) {
  prepareS1(false);
  QGuiApplication::clipboard()->setText(QStringLiteral("held before"));
  std::shared_ptr<ComparisonState> st = w().sharedState();
  std::atomic<bool> asked{false}, closed{false};
  QPointer<Window1> target = window_;
  w().workerYield = [&asked, &closed, target] {
    if (asked.exchange(true)) return;
    QMetaObject::invokeMethod(
        target,
        [&closed, target] {
          // Closed, then gone at once (as its deferred deletion would make
          // it), before the run goes on.
          target->close();
          delete target.data();
          closed = true;
        },
        Qt::BlockingQueuedConnection);
  };
  w().PBRUN->click();
  ASSERT_TRUE(waitFor([&] { return closed.load(); }));
  EXPECT_TRUE(st->askclose);
  runthreads::joinAll();
  QCoreApplication::processEvents();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QCoreApplication::processEvents();
  EXPECT_FALSE(window_);
  EXPECT_EQ(runthreads::active(), 0);
  // The run ended as if stopped: a new, partly written m2 and no results.
  EXPECT_EQ(st->m2.size(), 73308 + 410);
  EXPECT_EQ(st->windgraph, 0);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "held before");
  EXPECT_EQ(messages_.back(), "Computing...");  // what came after was dropped with the window
}

TEST_F(Runs, ReturnInAFieldPressesTheDefaultButton) {
  chooseBoth();
  auto* ws = find<QLineEdit>("EFWS");
  ws->setFocus();
  QTest::keyClick(ws, Qt::Key_Return);
  EXPECT_EQ(w().PBRUN->text(), "Stop");
  ASSERT_TRUE(waitFor([&] { return runEnded(); }));
  EXPECT_EQ(messages_.back(), "End...");
  EXPECT_EQ(w().state().windgraph, 30);
  // Hidden on the other tabs, the button takes no Return there.
  messages_.clear();
  w().TabPanel1->setCurrentIndex(3);
  auto* from = find<QLineEdit>("EFFrom");
  from->setFocus();
  QTest::keyClick(from, Qt::Key_Return);
  EXPECT_EQ(w().PBRUN->text(), "Run");
  EXPECT_TRUE(messages_.empty());
}

TEST_F(Runs, ACancelledSaveDialogLeavesNoFileAndTheRunGoesOn) {
  chooseBoth();
  find<QCheckBox>("CBFile")->click();
  int asked = 0;
  w().saveDialog = [&asked] {
    ++asked;
    return std::optional<std::string>();
  };
  w().PBRUN->click();
  EXPECT_EQ(asked, 1);  // before the run, on the main thread
  ASSERT_TRUE(waitFor([&] { return runEnded(); }));
  EXPECT_EQ(messages_.back(), "End...");
  EXPECT_NE(w().form().Results.find("Result is saved"), std::string::npos);
  EXPECT_EQ(QDir(dir_.path()).entryList(QDir::Files).size(), 2);  // the two sequences only
}

TEST_F(Runs, ARunOnASequenceWithoutBasesIsRefused) {
  choose(0, temp("n.fa", ">only N\nNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNN\n"));
  find<QCheckBox>("CBCPG")->click();
  ASSERT_TRUE(w().PBRUN->isEnabled());
  w().PBRUN->click();
  ASSERT_TRUE(waitFor([&] { return runEnded(); }));
  ASSERT_EQ(messages_.size(), 1u);
  EXPECT_NE(w().Message->text(), "Message");
  EXPECT_EQ(w().Message->fullText().toStdString(), messages_[0]);
  EXPECT_TRUE(w().TabPanel1->isEnabled());
  EXPECT_EQ(w().form().Results, "");
}

}  // namespace
}  // namespace trelvane::shell::test
