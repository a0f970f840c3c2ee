// window_test.cpp -- Window1's controls, their resizing, the input panel's routes and the tabs' handlers.
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QGuiApplication>
#include <QRadioButton>
#include <QTabWidget>
#include <QUrl>

#include "model/estimation.h"
#include "shell/app.h"
#include "shell/dotwindow.h"
#include "shell/widgets.h"
#include "shell_fixture.h"

namespace trelvane::shell::test {
namespace {

// layout

class Layout : public ShellTest {};

TEST_F(Layout, CaptionsAndStatesOfANewWindow) {
  EXPECT_EQ(w().windowTitle(), "Trelvane comparison");
  EXPECT_EQ(w().content()->size(), QSize(400, 450));
  EXPECT_EQ(w().PBRUN->text(), "Run");
  EXPECT_FALSE(w().PBRUN->isEnabled());
  EXPECT_FALSE(w().PBDot->isEnabled());
  EXPECT_FALSE(w().PupModel->isEnabled());
  EXPECT_EQ(find<QGroupBox>("GroupBox1")->title(), "Ouput");
  // PBRUN and ProgressBar1 are the window's own, outside the panel.
  EXPECT_EQ(w().PBRUN->parentWidget(), w().content());
  EXPECT_EQ(w().ProgressBar1->parentWidget(), w().content());
  QStringList tabs;
  for (int i = 0; i < w().TabPanel1->count(); ++i) tabs << w().TabPanel1->tabText(i);
  EXPECT_EQ(tabs, QStringList({"File", "Model", "Results", "Graphic", "Pref"}));
}

TEST_F(Layout, TabOrderIsTheOrderOfCreation) {
  const QStringList fileTab = {"PBRUN",      "EFWS",       "CBFile",       "CBClipboard", "BevelButton0", "EditField0",
                               "Comp0",      "Reverse0",   "display0",     "CBRemoveN0",  "EFAnaFrom",    "EFAnaTo",
                               "CBRemoveN1", "BevelButton1", "EditField1", "Display1",    "Reverse1",     "Comp1", "CBCPG"};
  QStringList chain;
  QWidget* next = w().PBRUN;
  do {
    if (fileTab.contains(next->objectName())) chain << next->objectName();
  } while ((next = next->nextInFocusChain()) != w().PBRUN);
  EXPECT_EQ(chain, fileTab);
}

TEST_F(Layout, PBRUNAndProgressBarShowOnTheFileTabOnly) {
  for (int tab : {2, 0}) {
    w().TabPanel1->setCurrentIndex(tab);
    EXPECT_EQ(w().PBRUN->isVisible(), tab == 0);
    EXPECT_EQ(w().ProgressBar1->isVisible(), tab == 0);
  }
}

// resizing

class Resize : public ShellTest {};

TEST_F(Resize, LockedControlsFollowTheEdgesAndTheOthersStay) {
  w().setContentSize(600, 650);
  QCoreApplication::processEvents();
  ASSERT_EQ(w().content()->size(), QSize(600, 650));
  struct Placed {
    const char* name;
    int left, top, width, height;
  };
  const Placed moved[] = {
      {"TabPanel1", 8, 4, 583, 630},       {"PBRUN", 511, 603, 69, 20},       {"ProgressBar1", 22, 611, 462, 12},
      {"Message", 22, 586, 462, 20},       {"GroupBox1", 165, 341, 215, 46},  {"EFWS", 122, 340, 35, 21},
      {"GBLong", 16, 61, 564, 132},        {"EditField0", 100, 84, 465, 22},  {"BevelButton0", 28, 84, 60, 22},
      {"EditField1", 100, 236, 465, 22},   {"Results", 26, 49, 546, 552},     {"Canvas1", 24, 67, 552, 450},
      {"EFFrom", 67, 601, 73, 22},         {"PBDot", 479, 600, 97, 22},       {"ST_messGraph", 24, 565, 543, 20},
      {"StaticText1_20", 24, 40, 315, 20}, {"CBMovingShort", 16, 509, 319, 20}, {"EFSD", 197, 601, 80, 22},
      {"CBHOSD", 26, 363, 280, 20},        {"GroupBox3", 16, 134, 564, 79},   {"EFwidth", 106, 45, 69, 22},
      {"EF_MaxX", 227, 477, 50, 20},       {"SeqModel1", 105, 309, 275, 40},
  };
  for (const Placed& c : moved) EXPECT_EQ(rectOf(c.name), QRect(c.left, c.top, c.width, c.height)) << c.name;
}

TEST_F(Resize, WindowSizeIsHeldBetweenItsLimits) {
  for (auto [asked, held] : {std::pair{QSize(100, 100), QSize(400, 450)}, std::pair{QSize(5000, 5000), QSize(1600, 1200)}}) {
    w().setContentSize(asked.width(), asked.height());
    EXPECT_EQ(w().content()->size(), held);
  }
}

TEST_F(Resize, EndOfResizeUpdatesTheSizeFieldsAndDefersTheDrawing) {
  w().TabPanel1->setCurrentIndex(1);
  w().state().changegraph = false;
  w().setContentSize(700, 500);
  w().resizeEnded();
  EXPECT_EQ(find<QLineEdit>("EFwidth")->text(), "700");
  EXPECT_EQ(find<QLineEdit>("EFHeight")->text(), "500");
  EXPECT_EQ(w().form().Canvas1Width, 652);
  EXPECT_EQ(w().form().Canvas1Height, 300);
  EXPECT_TRUE(w().state().changegraph);
}

TEST_F(Resize, SizeFieldsResizeTheWindowWithinItsLimits) {
  w().TabPanel1->setCurrentIndex(4);
  struct Row { const char* field; const char* typed; const char* held; QSize size; };
  for (const Row& r : {Row{"EFHeight", "300", "450", QSize(400, 450)}, Row{"EFwidth", "900", "900", QSize(900, 450)},
                       Row{"EFHeight", "5000", "1200", QSize(900, 1200)}}) {
    typeInto(r.field, r.typed);
    leave(r.field);
    EXPECT_EQ(find<QLineEdit>(r.field)->text(), r.held) << r.typed;
    EXPECT_EQ(w().content()->size(), r.size) << r.typed;
  }
}

// the input panel

class InputPanel : public ShellTest {};

TEST_F(InputPanel, DropsEnableRunButNeverTheDotPlot) {
  const std::string longPath = temp("long.fa", kLong);
  ASSERT_TRUE(dropOn(w().GBLong, fileUrl(longPath)));
  EXPECT_EQ(w().state().f[0], longPath);
  EXPECT_EQ(w().EditField0->text().toStdString(), longPath);
  EXPECT_EQ(w().EditField0->cursorPosition(), w().EditField0->text().size());
  EXPECT_EQ(w().GBLong->title(), "long title");
  EXPECT_FALSE(w().PBRUN->isEnabled());  // no shortest sequence, no CpG
  ASSERT_TRUE(dropOn(w().GBShort, fileUrl(temp("short.fa", kShort))));
  EXPECT_EQ(w().GBShort->title(), "short title");
  EXPECT_TRUE(w().PBRUN->isEnabled());
  EXPECT_FALSE(w().PBDot->isEnabled());
}

TEST_F(InputPanel, DialogsEnableRunAndDotPlotOnceTheOtherSideIsThere) {
  choose(0, temp("long.fa", kLong));
  EXPECT_FALSE(w().PBRUN->isEnabled());
  EXPECT_FALSE(w().PBDot->isEnabled());
  choose(1, temp("short.fa", kShort));
  EXPECT_TRUE(w().PBRUN->isEnabled());
  EXPECT_TRUE(w().PBDot->isEnabled());
  EXPECT_EQ(w().state().nbbases, 60);
  EXPECT_EQ(w().state().nbbases1, 40);
}

TEST_F(InputPanel, CancelledDialogForgetsTheFileButKeepsRunEnabled) {
  const std::string longPath = temp("long.fa", kLong);
  choose(1, temp("short.fa", kShort));
  choose(0, longPath);
  ASSERT_TRUE(w().PBRUN->isEnabled());
  choose(0, std::nullopt);
  EXPECT_FALSE(w().state().f[0].has_value());
  EXPECT_TRUE(w().PBRUN->isEnabled());
  EXPECT_EQ(w().EditField0->text().toStdString(), longPath);
}

TEST_F(InputPanel, TheFieldsInsideTheGroupBoxesLeaveFileDropsToTheBox) {
  for (const char* name : {"EditField0", "EFAnaFrom", "EFAnaTo", "EditField1"})
    EXPECT_FALSE(find(name)->acceptDrops()) << name;
  EXPECT_TRUE(w().GBLong->acceptDrops());
  EXPECT_TRUE(w().GBShort->acceptDrops());
}

TEST_F(InputPanel, OnlyTheFirstItemOfADragAndOnlyAPlainTextFileCount) {
  const std::string longPath = temp("long.fa", kLong);
  EXPECT_FALSE(dropOn(w().GBLong, {QUrl(QStringLiteral("https://example.org/long.fa"))}));
  EXPECT_FALSE(dropOn(w().GBLong, fileUrl(temp("picture.png", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)))));
  EXPECT_FALSE(w().state().f[0].has_value());
  EXPECT_EQ(w().EditField0->text(), "Drop a sequence file or output file");
  const std::string other = temp("other.fa", ">other\nACGTACGTACGTACGTACGTACGTACGTACGTACGTACGT\n");
  ASSERT_TRUE(dropOn(w().GBLong, fileUrl(longPath) + fileUrl(other)));
  EXPECT_EQ(w().state().f[0], longPath);
  EXPECT_EQ(w().state().nbbases, 60);
}

TEST_F(InputPanel, ADroppedResultFileRedrawsAndLeavesThePanelAlone) {
  ASSERT_TRUE(dropOn(w().GBLong, fileUrl(goldenPath("S3.result"))));
  EXPECT_EQ(w().EditField0->text(), "Drop a sequence file or output file");
  EXPECT_EQ(w().GBLong->title(), "Longest sequence");
  EXPECT_FALSE(w().PBRUN->isEnabled());
  EXPECT_EQ(w().state().windgraph, 20);
  EXPECT_NE(w().state().pct, nullptr);
  EXPECT_FALSE(w().state().changegraph);
}

// trelvane LONG SHORT: each file by the route of a drop on its side.
TEST_F(InputPanel, StartFilesGoToTheLongThenTheShortSideAndAThirdIsLeftOut) {
  const std::string longPath = temp("long.fa", kLong), shortPath = temp("short.fa", kShort);
  openStartFiles(w(), {QString::fromStdString(longPath), QString::fromStdString(shortPath),
                       QString::fromStdString(temp("third.fa", kLong))});
  EXPECT_EQ(w().state().f[0], longPath);
  EXPECT_EQ(w().state().f[1], shortPath);
  EXPECT_EQ(w().state().nbbases1, 40);
  EXPECT_TRUE(w().PBRUN->isEnabled());
  EXPECT_FALSE(w().PBDot->isEnabled());
}

TEST_F(InputPanel, AStartResultFileIsDrawnAgain) {
  openStartFiles(w(), {QString::fromStdString(goldenPath("S3.result"))});
  EXPECT_EQ(w().EditField0->text(), "Drop a sequence file or output file");
  EXPECT_EQ(w().state().windgraph, 20);
  EXPECT_NE(w().state().pct, nullptr);
}

TEST_F(InputPanel, CpGModeNeedsOnlyTheLongestAndTheTabChangeRepairsRun) {
  auto* cpg = find<QCheckBox>("CBCPG");
  choose(0, temp("long.fa", kLong));
  cpg->click();
  EXPECT_TRUE(w().PBRUN->isEnabled());
  EXPECT_FALSE(w().GBShort->isVisible());
  choose(1, temp("short.fa", kShort));
  cpg->click();  // off again with both files: disabled until the tab changes
  EXPECT_FALSE(w().PBRUN->isEnabled());
  EXPECT_TRUE(w().GBShort->isVisible());
  w().TabPanel1->setCurrentIndex(1);
  w().TabPanel1->setCurrentIndex(0);
  EXPECT_TRUE(w().PBRUN->isEnabled());
}

TEST_F(InputPanel, RangeEditsFollowIntoThePlotBoundsAndTheResamplings) {
  choose(0, temp("long.fa", kLong));
  typeInto("EFAnaFrom", "11");
  EXPECT_EQ(find<QLineEdit>("EFFrom")->text(), "11");
  EXPECT_EQ(find<QLineEdit>("EFSD")->text(), "49");
  typeInto("EFAnaTo", "40");
  EXPECT_EQ(find<QLineEdit>("EFTo")->text(), "40");
  EXPECT_EQ(find<QLineEdit>("EFSD")->text(), "29");
}

TEST_F(InputPanel, WindowSizeIsHeldTo255OnLeavingAndTakesThreeDigits) {
  typeInto("EFWS", "300");
  EXPECT_EQ(find<QLineEdit>("EFWS")->text(), "300");
  leave("EFWS");
  EXPECT_EQ(find<QLineEdit>("EFWS")->text(), "255");
  EXPECT_EQ(w().form().EFWS, "255");
  typeInto("EFWS", "4x5-67");
  EXPECT_EQ(find<QLineEdit>("EFWS")->text(), "456");
}

// field rules

class Fields : public ShellTest {};

TEST_F(Fields, LimitTextHoldsTypingButNotTheProgram) {
  w().TabPanel1->setCurrentIndex(4);
  typeInto("EF_MaxX", "0.95");
  EXPECT_EQ(find<QLineEdit>("EF_MaxX")->text(), "0.9");
  EXPECT_EQ(w().form().EF_MaxX, "0.9");
  w().form().EF_MaxX = "26.55";
  w().refresh();
  EXPECT_EQ(find<QLineEdit>("EF_MaxX")->text(), "26.55");
}

TEST_F(Fields, ReturnMovesTheFocusToThePartnerWithItsTextSelected) {
  w().TabPanel1->setCurrentIndex(3);
  auto* from = find<QLineEdit>("EFFrom");
  from->setFocus();
  QTest::keyClick(from, Qt::Key_Return);
  auto* to = find<QLineEdit>("EFTo");
  EXPECT_TRUE(to->hasFocus());
  EXPECT_EQ(to->selectedText(), "max");
  w().TabPanel1->setCurrentIndex(4);
  auto* minx = find<QLineEdit>("EF_MinX");
  minx->setFocus();
  QTest::keyClick(minx, Qt::Key_Enter);
  EXPECT_TRUE(find("EF_MaxX")->hasFocus());
}

// Model tab

class ModelTab : public ShellTest {};

TEST_F(ModelTab, TypedKeysOtherThanBasesAreSwallowedButAPasteIsNot) {
  w().TabPanel1->setCurrentIndex(1);
  w().SeqModel1->setFocus();
  QTest::keyClicks(w().SeqModel1, "ax-Tn 7g");
  EXPECT_EQ(w().SeqModel1->toPlainText(), "aT g");
  QGuiApplication::clipboard()->setText(QStringLiteral("N-U"));
  QTest::keyClick(w().SeqModel1, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(w().SeqModel1->toPlainText(), "aT gN-U");
  EXPECT_EQ(w().form().SeqModel1, "aT gN-U");
}

TEST_F(ModelTab, PupModelFollowsTheLengthsOfTheTwoTexts) {
  w().TabPanel1->setCurrentIndex(1);
  auto* mess = find<QLabel>("messModel");
  w().SeqModel1->setFocus();
  QTest::keyClicks(w().SeqModel1, "AAAATTTT");
  EXPECT_EQ(mess->text(), "The sequences must be aligned");
  EXPECT_FALSE(w().PupModel->isEnabled());
  w().SeqModel2->setFocus();
  QTest::keyClicks(w().SeqModel2, "AAGATTCT");
  EXPECT_EQ(mess->text(), "");
  EXPECT_TRUE(w().PupModel->isEnabled());
  w().PupModel->setCurrentIndex(1);
  emit w().PupModel->activated(1);
  EXPECT_EQ(w().form().PupModelListIndex, 1);
  find<QPushButton>("Apply")->click();
  bool changed = false;
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(find<QLabel>(kCellNames[i])->text().toStdString(), w().form().cells[i]) << kCellNames[i];
    changed = changed || w().form().cells[i] != ((i % 5 == 0) ? "1" : "0");
  }
  EXPECT_TRUE(changed);
  QTest::keyClicks(w().SeqModel2, "A");
  EXPECT_EQ(mess->text(), "The sequences must be aligned");
  EXPECT_EQ(w().PupModel->currentIndex(), 0);
  EXPECT_FALSE(w().PupModel->isEnabled());
}

// Graphic and Pref tabs

class GraphTabs : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    ASSERT_TRUE(dropOn(w().GBLong, fileUrl(goldenPath("S3.result"))));
    ASSERT_NE(w().state().pct, nullptr);
  }
};

TEST_F(GraphTabs, FlagHandlersDrawOnceWhenGraphicOpens) {
  w().TabPanel1->setCurrentIndex(4);
  w().state().pct = nullptr;
  find<QCheckBox>("CBMaxMin")->click();
  EXPECT_TRUE(w().state().changegraph);
  EXPECT_EQ(w().state().pct, nullptr);
  w().TabPanel1->setCurrentIndex(3);
  EXPECT_NE(w().state().pct, nullptr);
  EXPECT_FALSE(w().state().changegraph);
  w().state().pct = nullptr;
  w().TabPanel1->setCurrentIndex(4);
  w().TabPanel1->setCurrentIndex(3);
  EXPECT_EQ(w().state().pct, nullptr);
}

TEST_F(GraphTabs, DrawHandlersDrawAtOnce) {
  w().TabPanel1->setCurrentIndex(4);
  w().state().pct = nullptr;
  find<QRadioButton>("CBUsePoint1")->click();
  EXPECT_NE(w().state().pct, nullptr);
  EXPECT_TRUE(w().form().CBUsePoint1);
  EXPECT_FALSE(w().form().CBUsePoint);
}

TEST_F(GraphTabs, UnitIsConvertedOnceAndNotAgainByTheButtonAlreadyOn) {
  w().TabPanel1->setCurrentIndex(4);
  w().form().EF_MaxX = "0.9";
  w().refresh();
  find<QRadioButton>("CBFreqIB1")->click();
  EXPECT_EQ(find<QLineEdit>("EF_MaxX")->text(), "27");
  find<QRadioButton>("CBFreqIB1")->click();
  EXPECT_EQ(find<QLineEdit>("EF_MaxX")->text(), "27");
  find<QRadioButton>("CBFreqIB")->click();
  EXPECT_EQ(find<QLineEdit>("EF_MaxX")->text(), "0.9");
}

TEST_F(GraphTabs, ObservedMeanEnablesSymmetricSdWithoutDrawing) {
  w().TabPanel1->setCurrentIndex(4);
  w().state().pct = nullptr;
  find<QRadioButton>("RadioButton1")->click();
  EXPECT_TRUE(find("CBSymetrie")->isEnabled());
  EXPECT_EQ(w().state().pct, nullptr);
  find<QRadioButton>("CBHOSD")->click();
  EXPECT_FALSE(find("CBSymetrie")->isEnabled());
  EXPECT_NE(w().state().pct, nullptr);
}

TEST_F(GraphTabs, ResizeEndedOnGraphicRedrawsAtTheNewCanvasSize) {
  w().TabPanel1->setCurrentIndex(3);
  ASSERT_EQ(w().state().pct->width, 352);
  w().setContentSize(640, 520);
  w().resizeEnded();
  EXPECT_EQ(w().state().pct->width, 592);
  EXPECT_EQ(w().state().pct->height, 320);
  EXPECT_FALSE(w().state().changegraph);
}

// menus

class Menus : public ShellTest {};

TEST_F(Menus, MenuBar1HoldsFileAndEditWithTheirShortcuts) {
  struct Item {
    const char* name;
    const char* text;
    QKeySequence keys;
  };
  const Item items[] = {
      {"FileNew", "New window", QKeySequence(Qt::CTRL | Qt::Key_N)},
      {"FileClose", "Close", QKeySequence(Qt::CTRL | Qt::Key_W)},
      {"FileQuit", "Quit", QKeySequence(Qt::CTRL | Qt::Key_Q)},
      {"EditCut", "Cu&t", QKeySequence(Qt::CTRL | Qt::Key_X)},
      {"EditCopy", "&Copy", QKeySequence(Qt::CTRL | Qt::Key_C)},
      {"EditPaste", "&Paste", QKeySequence(Qt::CTRL | Qt::Key_V)},
      {"EditClear", "Clear", QKeySequence()},
  };
  for (const Item& i : items) {
    auto* a = w().menuBar()->findChild<QAction*>(QString::fromLatin1(i.name));
    ASSERT_NE(a, nullptr) << i.name;
    EXPECT_EQ(a->text(), QString::fromLatin1(i.text)) << i.name;
    EXPECT_EQ(a->shortcut(), i.keys) << i.name;
  }
  const auto menus = w().menuBar()->actions();
  ASSERT_EQ(menus.size(), 2);
  EXPECT_EQ(menus[0]->text(), "&File");
  EXPECT_EQ(menus[1]->text(), "&Edit");
}

TEST_F(Menus, EachNewWindowHasItsOwnComparison) {
  QPointer<Window1> other = App::FileNew_Action();
  ASSERT_TRUE(other);
  choose(0, temp("long.fa", kLong));
  EXPECT_EQ(w().state().nbbases, 60);
  EXPECT_EQ(other->state().nbbases, 0);
  EXPECT_FALSE(other->state().f[0].has_value());
  EXPECT_NE(&other->state(), &w().state());
  other->menuBar()->findChild<QAction*>(QStringLiteral("FileClose"))->trigger();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(other);
  EXPECT_TRUE(window_);
}

TEST_F(Menus, CopyPutsThePictureOnTheClipboardOnlyOnTheGraphicTab) {
  auto* copy = w().menuBar()->findChild<QAction*>(QStringLiteral("EditCopy"));
  w().TabPanel1->setFocus();
  QGuiApplication::clipboard()->setText(QStringLiteral("kept"));
  w().TabPanel1->setCurrentIndex(3);  // no picture yet
  copy->trigger();
  EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasImage());
  EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasText());

  ASSERT_TRUE(dropOn(w().GBLong, fileUrl(goldenPath("S3.result"))));
  w().TabPanel1->setCurrentIndex(0);
  QGuiApplication::clipboard()->setText(QStringLiteral("kept"));
  copy->trigger();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "kept");

  w().TabPanel1->setCurrentIndex(3);
  w().TabPanel1->setFocus();
  copy->trigger();
  const QMimeData* mime = QGuiApplication::clipboard()->mimeData();
  EXPECT_TRUE(mime->hasImage());
  EXPECT_TRUE(mime->data(QStringLiteral("image/png")).startsWith("\x89PNG"));
  EXPECT_TRUE(mime->data(QStringLiteral("image/svg+xml")).contains("<svg"));
  const QImage image = qvariant_cast<QImage>(mime->imageData());
  EXPECT_EQ(image.size(), QSize(w().state().pct->width, w().state().pct->height));
}

TEST(Application, VersionIsMajorMinorBugThenThePackageInformation) {
  EXPECT_EQ(versionText(1, 0, 12, "Trelvane for Linux"), "1.0.12 Trelvane for Linux");
  App app;
  EXPECT_EQ(App::instance(), &app);
  int aboutOpened = 0;
  app.openAboutBox = [&](App& a) {
    ++aboutOpened;
    EXPECT_EQ(a.version.rfind(TRELVANE_PROJECT_VERSION " ", 0), 0u) << a.version;
  };
  app.Event_Open();
  EXPECT_EQ(aboutOpened, 1);
}

// dot plot

class DotPlotWindow : public ShellTest {};

TEST_F(DotPlotWindow, OpensSizedFromTheRangeAndRedrawsFromTheWindowAfresh) {
  chooseBoth();
  w().TabPanel1->setCurrentIndex(3);
  ASSERT_TRUE(w().PBDot->isEnabled());
  w().PBDot->click();
  DotWindow* dot = nullptr;
  for (QWidget* top : QApplication::topLevelWidgets())
    if (top->objectName() == "DotWindow" && top->isVisible()) dot = static_cast<DotWindow*>(top);
  ASSERT_NE(dot, nullptr);
  EXPECT_EQ(dot->windowTitle(), "Dot Plot");
  // Before any run windgraph is 0: the range ends at nbbases, 60 + 40 wide.
  EXPECT_EQ(dot->size(), QSize(100, 151));
  EXPECT_EQ(dot->canvas()->geometry(), QRect(0, 50, 100, 101));
  ASSERT_NE(dot->picture(), nullptr);
  const std::size_t dotsAll = dot->picture()->dots.count();
  EXPECT_GT(dotsAll, 0u);
  w().form().EFTo = "20";
  dot->findChild<QPushButton*>(QStringLiteral("PushButton1"))->click();
  EXPECT_LT(dot->picture()->dots.count(), dotsAll);
  EXPECT_EQ(dot->size(), QSize(100, 151));
  dot->close();
}

TEST_F(DotPlotWindow, ARangeWiderThanTheScreenIsSeenThroughAScrollArea) {
  std::string seq;
  for (int i = 0; i < 3000; ++i) seq += "ACGT"[(i * 7 + i / 5) % 4];
  choose(0, temp("wide.fa", ">wide\n" + seq + "\n"));
  choose(1, temp("short.fa", kShort));
  w().TabPanel1->setCurrentIndex(3);
  w().PBDot->click();
  DotWindow* dot = nullptr;
  for (QWidget* top : QApplication::topLevelWidgets())
    if (top->objectName() == "DotWindow" && top->isVisible()) dot = static_cast<DotWindow*>(top);
  ASSERT_NE(dot, nullptr);
  const QSize screen = QGuiApplication::primaryScreen()->availableGeometry().size();
  EXPECT_LE(dot->width(), screen.width());
  // The canvas keeps one pixel a base; only the window is bounded.
  EXPECT_EQ(dot->canvas()->width(), 3000 + 40);
  EXPECT_LT(dot->canvas()->visibleRegion().boundingRect().width(), dot->canvas()->width());
  dot->close();
}

}  // namespace
}  // namespace trelvane::shell::test
