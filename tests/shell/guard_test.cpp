// guard_test.cpp -- the window's guards: runs past memory, unwritable result files, non-DNA files, stale pictures, limits, assistive input.
#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>

#include <vector>

#include "shell/app.h"
#include "shell/dotwindow.h"
#include "shell/report_view.h"
#include "shell/widgets.h"
#include "shell_fixture.h"

namespace trelvane::shell::test {
namespace {

class Guards : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    w().runSeed = [] { return uint64_t{1}; };
    w().confirmRun = [this](const std::string& text) {
      warnings_.push_back(text);
      return true;
    };
  }
  void loadExample() {
    choose(0, examplePath("HUMHBB.fa"));
    choose(1, examplePath("V00508.fa"));
  }
  void runToEnd(Window1& win) {
    win.PBRUN_Action();
    ASSERT_TRUE(waitFor([&] { return !win.state().running && win.PBRUN->text() == "Run"; }));
  }
  void runToEnd() { runToEnd(w()); }

  std::vector<std::string> warnings_;
};

// A window of 255 with the default threshold lists nearly every window pair:
// the user is warned first, and the run ends at the bound of its texts with
// the cause and the remedy, while another window goes on working.
TEST_F(Guards, AListingOfNearlyEveryPairEndsTheRunNotTheProgram) {
  loadExample();
  typeInto("EFWS", "255");
  leave("EFWS");
  w().textLimit = 24 << 20;
  auto* other = new Window1;
  other->show();
  runToEnd();

  ASSERT_EQ(warnings_.size(), 1u);
  EXPECT_NE(warnings_[0].find("With a window of 255 bases"), std::string::npos) << warnings_[0];
  EXPECT_NE(warnings_[0].find("Raise \"Display alignements with more than\""), std::string::npos);
  const std::string cause = "The listing and rows outgrew 24 MB, the most this machine's memory allows: "
                            "raise the listing's identities threshold (now 20) or narrow the analysis range";
  EXPECT_EQ(w().form().Message, cause);
  EXPECT_EQ(w().Message->toolTip().toStdString(), cause);  // elided in the label, whole in its tooltip
  const std::string& results = w().form().Results;
  EXPECT_LE(results.size(), kResultsShown + 4096);
  EXPECT_EQ(results.substr(results.size() - cause.size() - 1), cause + "\n");
  EXPECT_NE(results.find("of the listing are not shown here"), std::string::npos);

  // the other window, and this one, run on
  other->openDialog = [] { return std::optional<std::string>(examplePath("HUMHBB.fa")); };
  other->BevelButton0_Action();
  other->openDialog = [] { return std::optional<std::string>(examplePath("V00508.fa")); };
  other->BevelButton1_Action();
  runToEnd(*other);
  EXPECT_EQ(other->form().Message, "End...");
  other->close();
  w().activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&w()));
  typeInto("EFWS", "30");
  leave("EFWS");
  runToEnd();
  EXPECT_EQ(w().form().Message, "End...");
  EXPECT_EQ(warnings_.size(), 1u);  // a window of 30 lists few pairs: no warning
}

TEST_F(Guards, AWarningDeclinedStartsNoRun) {
  loadExample();
  typeInto("EFWS", "255");
  leave("EFWS");
  w().confirmRun = [](const std::string&) { return false; };
  w().PBRUN_Action();
  EXPECT_FALSE(w().state().running);
  EXPECT_EQ(w().PBRUN->text(), "Run");
  EXPECT_TRUE(w().TabPanel1->isEnabled());
}

TEST_F(Guards, AResultFileThatCannotBeWrittenIsNamedWithItsReason) {
  loadExample();
  typeInto("EFAnaTo", "3000");
  find<QCheckBox>("CBClipboard")->click();
  find<QCheckBox>("CBFile")->click();
  w().saveDialog = [] { return std::optional<std::string>("/proc/trelvane/Output.txt"); };
  QGuiApplication::clipboard()->clear();
  runToEnd();
  const std::string why = "The result file /proc/trelvane/Output.txt was not written: No such file or directory";
  EXPECT_EQ(w().form().Message, why);
  const std::string& results = w().form().Results;
  EXPECT_NE(results.find("Result is saved\n" + why + "\n"), std::string::npos);
  EXPECT_TRUE(QGuiApplication::clipboard()->text().startsWith(QStringLiteral("Trelvane comparison\n")));
}

// The file types of drops and dialogs alike: DNA names whatever their bytes,
// other names by their content.
TEST_F(Guards, DropsAndDialogsTakeTheSameSequenceFiles) {
  const std::string binaryBytes("\x01\x02\x00\x7f\xfe", 5);
  for (const char* name : {"a.fa", "b.fasta", "c.fna", "d.fas", "e.seq", "f.txt", "G.FA"})
    EXPECT_TRUE(dropOn(w().GBLong, fileUrl(temp(name, binaryBytes)))) << name;
  EXPECT_FALSE(dropOn(w().GBLong, fileUrl(temp("g.bin", binaryBytes))));
  EXPECT_TRUE(dropOn(w().GBLong, fileUrl(temp("noname", ">x\nACGT\n"))));
  const QString filter = openFilter();
  for (const char* pattern : {"*.txt", "*.fa", "*.fasta", "*.fna", "*.fas", "*.seq"})
    EXPECT_TRUE(filter.section(QStringLiteral(";;"), 0, 0).contains(QLatin1String(pattern))) << pattern;
}

TEST_F(Guards, AFileThatIsNoDnaIsReadButAnnounced) {
  const struct {
    const char* name;
    std::string bytes;
    std::string message;
  } rows[] = {
      {"reads.fq", "@r1\nACGTNACGTA\n+\nIIIIFFFF##\n", "Long sequence read 10 bases; the file looks like FASTQ (reads with "
                                                       "their qualities), not FASTA: 9 of its 19 letters are not A, C, G, T or N"},
      {"protein.fa", ">p\nMKVLAAGIVGLLLA\n", "Long sequence read 5 bases; the file looks like a protein sequence or another "
                                             "format, not DNA: 9 of its 14 letters are not A, C, G, T or N"},
      {"iupac.fa", ">d\nACGTRYACGTACGTACGT\n", "Long sequence read 16 bases"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.name);
    ASSERT_TRUE(dropOn(w().GBLong, fileUrl(temp(r.name, r.bytes))));
    EXPECT_EQ(w().form().Message, r.message);
  }
}

// After a run the Graphic tab shows that run's curve, or none with a note.
TEST_F(Guards, ARunWithoutWindowsLeavesNoEarlierCurve) {
  loadExample();
  typeInto("EFAnaTo", "2000");
  runToEnd();
  ASSERT_TRUE(w().state().pct);
  EXPECT_FALSE(w().state().pct->Objects.Count() == 0);
  typeInto("EFWS", "0");
  leave("EFWS");
  runToEnd();
  w().TabPanel1->setCurrentIndex(3);
  ASSERT_TRUE(w().state().pct);
  EXPECT_TRUE(w().state().pct->Objects.Count() == 0);
  EXPECT_EQ(w().form().ST_messGraph, "No profile to draw: the window size of the run is 0");
}

TEST_F(Guards, TheBarStandsFullWhenTheRunEnds) {
  loadExample();
  typeInto("EFAnaTo", "5000");
  runToEnd();
  EXPECT_GT(w().ProgressBar1->maximum(), 100);
  EXPECT_EQ(w().ProgressBar1->value(), w().ProgressBar1->maximum());
}

TEST_F(Guards, WindowLimitsAndLongTitles) {
  const std::string title(300, 'x');
  choose(0, temp("long.fa", ">" + title + "\nACGTACGTACGT\n"));
  EXPECT_LT(w().GBLong->title().size(), 200);
  EXPECT_TRUE(w().GBLong->title().endsWith(QChar(0x2026)));
  EXPECT_EQ(w().GBLong->toolTip().toStdString(), title);
  choose(0, temp("short-title.fa", ">short\nACGTACGTACGT\n"));
  EXPECT_EQ(w().GBLong->title(), QStringLiteral("short"));
  EXPECT_TRUE(w().GBLong->toolTip().isEmpty());

  w().resize(3000, 3000);
  QCoreApplication::processEvents();
  EXPECT_EQ(w().content()->size(), QSize(1600, 1200));
  EXPECT_LE(w().width(), 1600);
}

// A plot wider than the screen gets a horizontal bar; the window grows by
// its height, so the labels along the plot's bottom stay in sight.
TEST_F(Guards, TheDotPlotsScrollBarLeavesItsLabelsInSight) {
  choose(0, temp("long.fa", ">l\n" + std::string(6000, 'A') + "\n"));
  choose(1, temp("short.fa", ">s\n" + std::string(300, 'A') + "\n"));
  auto* dot = new DotWindow(&w());
  dot->show();
  auto* area = dot->findChild<QScrollArea*>();
  ASSERT_NE(area, nullptr);
  QCoreApplication::processEvents();
  ASSERT_TRUE(area->horizontalScrollBar()->isVisible());
  EXPECT_GE(area->viewport()->height(), area->widget()->height());
  dot->close();
}

// Values and toggles that come through the accessibility interface count as
// typed ones: the change and leaving handlers run, and a refresh keeps them.
TEST_F(Guards, AssistiveInputCountsAsTyped) {
  chooseBoth();
  QAccessibleInterface* ws = QAccessible::queryAccessibleInterface(find("EFWS"));
  ASSERT_NE(ws, nullptr);
  ws->setText(QAccessible::Value, QStringLiteral("300"));
  EXPECT_EQ(w().form().EFWS, "255");  // the field's leaving handler clamps it

  QAccessibleInterface* from = QAccessible::queryAccessibleInterface(find("EFAnaFrom"));
  ASSERT_NE(from->editableTextInterface(), nullptr);
  from->editableTextInterface()->replaceText(0, from->textInterface()->characterCount(), QStringLiteral("11"));
  EXPECT_EQ(w().form().EFAnaFrom, "11");
  EXPECT_EQ(w().form().EFFrom, "11");  // the change handler ran

  QAccessibleInterface* cpg = QAccessible::queryAccessibleInterface(find("CBCPG"));
  cpg->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
  EXPECT_TRUE(w().form().CBCPG);
  EXPECT_FALSE(w().form().GBShortVisible);  // CBCPG_Action ran
  w().refresh();
  EXPECT_TRUE(find<QCheckBox>("CBCPG")->isChecked());

  QAccessibleInterface* number = QAccessible::queryAccessibleInterface(find("CBFreqIB1"));
  number->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
  EXPECT_TRUE(w().form().CBFreqIB1);
  EXPECT_FALSE(w().form().CBFreqIB);
}

// trelvane LONG SHORT (a file manager's "open with"): each file by the route
// of a drop on its side, a third left out; a result file is drawn again.
TEST_F(Guards, StartFilesTakeTheRoutesOfDrops) {
  const std::string longPath = temp("long.fa", kLong), shortPath = temp("short.fa", kShort);
  openStartFiles(w(), {QString::fromStdString(longPath), QString::fromStdString(shortPath),
                       QString::fromStdString(temp("third.fa", kLong))});
  EXPECT_EQ(w().state().f[0], longPath);
  EXPECT_EQ(w().state().f[1], shortPath);
  EXPECT_EQ(w().state().nbbases1, 40);
  EXPECT_TRUE(w().PBRUN->isEnabled());
  EXPECT_FALSE(w().PBDot->isEnabled());  // drops never enable it

  openStartFiles(w(), {QString::fromStdString(goldenPath("S3.result"))});
  EXPECT_EQ(w().state().windgraph, 20);
  EXPECT_NE(w().state().pct, nullptr);
}

}  // namespace
}  // namespace trelvane::shell::test
