// window1.h -- the main window: five tabs of controls over one comparison state and its form.
#pragma once

#include <QMainWindow>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "state/form.h"
#include "state/state.h"
#include "input/panel.h"
#include "shell/controls.h"
#include "shell/form_binding.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTabWidget;
class QTimer;
class QAbstractButton;

namespace trelvane {
struct RunOutcome;
}

namespace trelvane::shell {

class Anchors;
class DropBox;
class ElidedLabel;
class EventHook;
class PictureCanvas;

// One comparison window. Its state is a ComparisonState, shared with a run
// that may outlive the window, and a Form that the widgets mirror: a user's
// edit sets the form's field, runs the logic's handler, then every widget is
// refreshed from the form with its signals blocked.
class Window1 : public QMainWindow {
 public:
  explicit Window1(QWidget* parent = nullptr);
  ~Window1() override;

  ComparisonState& state() { return *st_; }
  std::shared_ptr<ComparisonState> sharedState() const { return st_; }
  Form& form() { return form_; }
  // The window's area under its menu bar, Width by Height; the controls'
  // positions are given in its coordinates.
  QWidget* content() const { return content_; }

  // Seams for what would ask the user: the open dialog of the Filename
  // buttons and the Save dialog of CBFile (a nil answer is a cancel), and the
  // seed of a run (the clock when not set).
  std::function<std::optional<std::string>()> openDialog;
  std::function<std::optional<std::string>()> saveDialog;
  std::function<uint64_t()> runSeed;
  // Called on the run's worker thread at each of its yields; a test acts
  // there at a known point of the scan.
  std::function<void()> workerYield;
  // Each text that a run shows in Message, as it is shown.
  std::function<void(const std::string&)> messageShown;
  // The question before a run whose listing would hold most window pairs,
  // or more than memory allows: true runs it (a message box when not set).
  std::function<bool(const std::string& warning)> confirmRun;
  // The bound of a run's texts; 0 takes runTextLimit().
  uint64_t textLimit = 0;

  // handlers of the File tab
  void PBRUN_Action();
  void BevelButton0_Action();
  void BevelButton1_Action();
  void GBLong_DropObject(const QString& path);
  void GBShort_DropObject(const QString& path);
  // the menus
  void EditCopy_Action();
  void FileClose_Action();
  // File > Export: the profile, its random expectation, the conserved
  // segments or the CpG islands of the present result, to a file chosen in a
  // Save dialog (saveDialog answers it where set). The outcome is shown in
  // Message.
  enum class Export { BedGraph, BigWig, RandomTracks, SegmentsBed, SegmentsTsv, IslandsBed, IslandsGff };
  void FileExport_Action(Export what);

  // Form to widgets, signals blocked.
  void refresh();
  // Sets the window's Width and Height (the area under the menu bar).
  void setContentSize(int width, int height);
  // What the end of the user's resize does: the size into the form, then
  // the logic's Event_Resized.
  void resizeEnded();

  // The run's reports, on the main thread.
  void runMessage(const std::string& text);
  void runProgress(int value, int maximum);
  void runSetEFAnaTo(const std::string& text);
  void runEnded(const RunOutcome& outcome);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // The tab panel, PBRUN and ProgressBar1, then each tab, which builds its
  // controls and binds them to the form (page_*.cpp).
  void build();
  void buildFileTab(QWidget* page);
  void buildModelTab(QWidget* page);
  void buildResultsTab(QWidget* page);
  void buildGraphicTab(QWidget* page);
  void buildPrefTab(QWidget* page);

  // Graph for the present canvas size, then the canvas repainted.
  void graph();
  // An empty picture and a note in place of one that no longer belongs to
  // the state (no bases, or a window size of 0).
  void dropStalePicture();
  // A handler of the Graphic and Pref tabs, which may call Graph.
  void graphHandler(void (*handler)(ComparisonState&, Form&));
  // EFwidth and EFHeight: the handler, then the window takes the size.
  void sizeHandler(void (*handler)(ComparisonState&, Form&));
  void syncCanvasSize();
  void paintCanvas(QPainter& painter);
  // A file by one of the four routes, then the path field's insertion point at its end.
  void openRoute(Route route, const std::optional<std::string>& path);
  // The side's file read again for the record or region of its chooser.
  void chooseRegion(int side);
  void fillRecordChooser(int side);
  std::optional<std::string> askOpenFile();
  std::optional<std::string> askSaveFile();
  // The warning on a listing too large, answered; true where none is due.
  bool listingWarningAccepted();
  void startRun();
  void appendResultsLine(const std::string& line);
  void PBDot_Action();
  void repaintNow(QWidget* w);

  std::shared_ptr<ComparisonState> st_;
  Form form_;
  FormBinding bind_;
  QWidget* content_ = nullptr;
  Anchors* anchors_ = nullptr;
  Controls make_{nullptr};
  QTimer* resizeTimer_ = nullptr;
  // what the run going on was started with
  std::optional<std::string> settingsResultPath_;
  bool runWasCpg_ = false;

 public:
  // The controls the window's logic reaches directly.
  QTabWidget* TabPanel1 = nullptr;
  QPushButton* PBRUN = nullptr;
  QProgressBar* ProgressBar1 = nullptr;
  ElidedLabel* Message = nullptr;
  DropBox* GBLong = nullptr;
  DropBox* GBShort = nullptr;
  QLineEdit* EditField0 = nullptr;
  QLineEdit* EditField1 = nullptr;
  // The record chooser of each side, with room to type a region after the name.
  QComboBox* Region0 = nullptr;
  QComboBox* Region1 = nullptr;
  QPlainTextEdit* Results = nullptr;
  PictureCanvas* Canvas1 = nullptr;
  QPlainTextEdit* SeqModel1 = nullptr;
  QPlainTextEdit* SeqModel2 = nullptr;
  QComboBox* PupModel = nullptr;
  QPushButton* PBDot = nullptr;
};

}  // namespace trelvane::shell
