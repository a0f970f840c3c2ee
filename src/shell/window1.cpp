// window1.cpp -- Window1's bindings between widgets and form, and its handlers.
#include "shell/window1.h"

#include <QAbstractButton>
#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSvgGenerator>
#include <QTabWidget>
#include <QTimer>

#include "engine/listing_estimate.h"
#include "engine/run.h"
#include "model/entry.h"
#include "model/estimation.h"
#include "platform/memory.h"
#include "platform/numtext.h"
#include "platform/rnd.h"
#include "plots/graph.h"
#include "plots/graph_controls.h"
#include "plots/picture_qt.h"
#include "shell/anchors.h"
#include "shell/app.h"
#include "shell/dotwindow.h"
#include "shell/report_view.h"
#include "shell/runhost.h"
#include "shell/widgets.h"

namespace trelvane::shell {

namespace {

// The area under the menu bar; tells the window when its size changes.
class ContentArea : public QWidget {
 public:
  std::function<void()> resized;

 protected:
  void resizeEvent(QResizeEvent* event) override {
    QWidget::resizeEvent(event);
    if (resized) resized();
  }
};

constexpr int kDesignWidth = 400, kDesignHeight = 450;

}  // namespace

Window1::Window1(QWidget* parent) : QMainWindow(parent), st_(std::make_shared<ComparisonState>()) {
  setAttribute(Qt::WA_DeleteOnClose);
  setObjectName(QStringLiteral("Window1"));
  setWindowTitle(QStringLiteral("Trelvane comparison"));
  auto* area = new ContentArea;
  content_ = area;
  content_->setObjectName(QStringLiteral("Window1Area"));
  content_->resize(kDesignWidth, kDesignHeight);
  content_->setMinimumSize(400, 450);
  content_->setMaximumSize(1600, 1200);
  setCentralWidget(content_);
  anchors_ = new Anchors(content_, QSize(kDesignWidth, kDesignHeight));
  build();
  buildMenuBar1(menuBar(), this);
  // The window itself, menu bar included, keeps the limits of its area:
  // without them a maximised window grows past what EFwidth and EFHeight
  // can say.
  const QSize menu(0, menuBar()->sizeHint().height());
  setMinimumSize(content_->minimumSize() + menu);
  setMaximumSize(content_->maximumSize() + menu);
  bindAll();

  // There is no live resize: the end of the user's drag is taken to be a
  // short pause after the last change of size.
  resizeTimer_ = new QTimer(this);
  resizeTimer_->setSingleShot(true);
  resizeTimer_->setInterval(250);
  connect(resizeTimer_, &QTimer::timeout, this, [this] { resizeEnded(); });
  area->resized = [this] {
    syncCanvasSize();
    resizeTimer_->start();
  };

  // Event_Open: the comparison state of a new window.
  st_->open();
  setContentSize(kDesignWidth, kDesignHeight);
  refresh();
}

Window1::~Window1() {
  // A run still going reads askclose and ends by itself; it holds the state.
  if (st_->running) st_->askclose = true;
}

// bindings

void Window1::edited(const Handler& handler) {
  if (refreshing_) return;
  if (handler) handler();
  refresh();
}

void Window1::bindText(QLineEdit* e, std::string Form::*f, Handler onChange) {
  pushers_.push_back([this, e, f] {
    const QString text = toQ(form_.*f);
    if (e->text() != text) {
      QSignalBlocker block(e);
      e->setText(text);
    }
  });
  // Every change that is not the form's own (whose setText is blocked):
  // typing, and a value set by an assistive technology. Such a value comes
  // without the focus, so the field's leaving handler follows at once, as
  // if the user had typed it and moved on.
  connect(e, &QLineEdit::textChanged, this, [this, e, f, onChange](const QString& text) {
    form_.*f = fromQ(text);
    edited(onChange);
    if (!e->hasFocus())
      if (auto leave = leaveHandlers_.find(e); leave != leaveHandlers_.end()) edited(leave->second);
  });
}

void Window1::bindPlain(QPlainTextEdit* e, std::string Form::*f, Handler onChange) {
  // A report can be large: the text that the widget holds is remembered as
  // bytes, so that a refresh compares bytes and converts only on a change.
  auto shown = std::make_shared<std::string>(fromQ(e->toPlainText()));
  pushers_.push_back([this, e, f, shown] {
    if (form_.*f == *shown) return;
    *shown = form_.*f;
    QSignalBlocker block(e);
    e->setPlainText(toQ(*shown));
  });
  connect(e, &QPlainTextEdit::textChanged, this, [this, e, f, shown, onChange] {
    form_.*f = fromQ(e->toPlainText());
    *shown = form_.*f;
    edited(onChange);
  });
}

void Window1::bindCheck(QAbstractButton* b, bool Form::*f, Handler onAction) {
  pushers_.push_back([this, b, f] {
    if (b->isChecked() != form_.*f) {
      QSignalBlocker block(b);
      b->setChecked(form_.*f);
    }
  });
  checkPullers_.push_back([this, b, f] { form_.*f = b->isChecked(); });
  // toggled, not clicked: a toggle through the accessibility interface is
  // no click, and must act as one.
  connect(b, &QAbstractButton::toggled, this, [this, onAction] {
    pullChecks();
    edited(onAction);
  });
}

void Window1::bindRadio(QAbstractButton* b, bool Form::*f, Handler onAction) {
  pushers_.push_back([this, b, f] {
    if (b->isChecked() != form_.*f) {
      QSignalBlocker block(b);
      b->setChecked(form_.*f);
    }
  });
  checkPullers_.push_back([this, b, f] { form_.*f = b->isChecked(); });
  // A click on the button already on is no action (the unit would be
  // converted twice); the partner turned off is none either.
  connect(b, &QAbstractButton::toggled, this, [this, f, onAction](bool on) {
    if (!on || form_.*f) return;
    pullChecks();
    edited(onAction);
  });
}

void Window1::bindLabel(QLabel* l, std::string Form::*f) {
  pushers_.push_back([this, l, f] {
    const QString text = toQ(form_.*f);
    if (l->text() != text) l->setText(text);
  });
}

void Window1::bindEnabled(QWidget* w, bool Form::*f) {
  pushers_.push_back([this, w, f] {
    if (w->isEnabled() != form_.*f) w->setEnabled(form_.*f);
  });
}

void Window1::bindVisible(QWidget* w, bool Form::*f) {
  pushers_.push_back([this, w, f] {
    if (!w->isHidden() != form_.*f) w->setVisible(form_.*f);
  });
}

void Window1::pullChecks() {
  for (auto& pull : checkPullers_) pull();
}

void Window1::lostFocus(QLineEdit* e, Handler onLeave) {
  leaveHandlers_[e] = onLeave;
  auto* hook = new EventHook(e);
  hook->lostFocus = [this, onLeave] { edited(onLeave); };
  const char* partner = returnKeyPartner(e->objectName().toLatin1().constData());
  if (partner) returnPartner(hook, QString::fromLatin1(partner));
}

void Window1::returnPartner(EventHook* hook, const QString& partnerName) {
  hook->keyDown = [this, partnerName](QKeyEvent* key) {
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
      if (auto* partner = content_->findChild<QLineEdit*>(partnerName)) {
        partner->setFocus(Qt::TabFocusReason);
        partner->selectAll();
      }
    }
    return false;  // the key still goes to the field
  };
}

void Window1::refresh() {
  refreshing_ = true;
  for (auto& push : pushers_) push();
  refreshing_ = false;
}

template <class W>
static W* child(QWidget* root, const char* name) {
  W* w = root->findChild<W*>(QString::fromLatin1(name));
  Q_ASSERT(w);
  return w;
}

void Window1::bindAll() {
  auto& st = *st_;
  auto line = [this](const char* name) { return child<QLineEdit>(content_, name); };
  auto box = [this](const char* name) { return child<QAbstractButton>(content_, name); };
  auto lab = [this](const char* name) { return child<QLabel>(content_, name); };

  // File tab
  bindText(line("EFWS"), &Form::EFWS);
  lostFocus(line("EFWS"), [this] { EFWS_LostFocus(form_); });
  bindText(line("EFAnaFrom"), &Form::EFAnaFrom, [this, &st] { EFAnaFrom_TextChange(st, form_); });
  bindText(line("EFAnaTo"), &Form::EFAnaTo, [this, &st] { EFAnaTo_TextChange(st, form_); });
  bindText(EditField0, &Form::EditField0);
  bindText(EditField1, &Form::EditField1);
  bindCheck(box("display0"), &Form::display0);
  bindCheck(box("Display1"), &Form::Display1);
  bindCheck(box("CBCPG"), &Form::CBCPG, [this, &st] { CBCPG_Action(st, form_); });
  bindCheck(box("CBFile"), &Form::CBFile);
  bindCheck(box("CBClipboard"), &Form::CBClipboard);
  bindCheck(box("Comp0"), &Form::Comp0);
  bindCheck(box("Reverse0"), &Form::Reverse0);
  bindCheck(box("CBRemoveN0"), &Form::CBRemoveN0);
  bindCheck(box("Comp1"), &Form::Comp1);
  bindCheck(box("Reverse1"), &Form::Reverse1);
  bindCheck(box("CBRemoveN1"), &Form::CBRemoveN1);
  pushers_.push_back([this] {
    if (Message->fullText() != toQ(form_.Message)) Message->setFullText(toQ(form_.Message));
  });
  pushers_.push_back([this] {
    if (GBLong->fullTitle() != toQ(form_.GBLongCaption)) GBLong->setFullTitle(toQ(form_.GBLongCaption));
    if (GBShort->fullTitle() != toQ(form_.GBShortCaption)) GBShort->setFullTitle(toQ(form_.GBShortCaption));
    if (PBRUN->text() != toQ(form_.PBRUNCaption)) PBRUN->setText(toQ(form_.PBRUNCaption));
    if (ProgressBar1->maximum() != form_.ProgressBar1Maximum) ProgressBar1->setMaximum(form_.ProgressBar1Maximum);
    if (ProgressBar1->value() != form_.ProgressBar1Value) ProgressBar1->setValue(form_.ProgressBar1Value);
    if (TabPanel1->currentIndex() != form_.TabPanel1Value) {
      QSignalBlocker block(TabPanel1);
      TabPanel1->setCurrentIndex(form_.TabPanel1Value);
    }
  });
  bindVisible(GBShort, &Form::GBShortVisible);
  bindEnabled(PBRUN, &Form::PBRUNEnabled);
  bindVisible(PBRUN, &Form::PBRUNVisible);
  bindVisible(ProgressBar1, &Form::ProgressBar1Visible);
  bindEnabled(TabPanel1, &Form::TabPanel1Enabled);
  connect(PBRUN, &QPushButton::clicked, this, [this] { PBRUN_Action(); });
  connect(box("BevelButton0"), &QAbstractButton::clicked, this, [this] { BevelButton0_Action(); });
  connect(box("BevelButton1"), &QAbstractButton::clicked, this, [this] { BevelButton1_Action(); });
  GBLong->onDrop = [this](const QString& path) { GBLong_DropObject(path); };
  GBShort->onDrop = [this](const QString& path) { GBShort_DropObject(path); };
  connect(TabPanel1, &QTabWidget::currentChanged, this, [this, &st](int v) {
    form_.TabPanel1Value = v;
    syncCanvasSize();
    edited([this, &st] {
      TabPanel1_Change(st, form_);
      dropStalePicture();
      Canvas1->update();
    });
  });

  // Model tab
  bindPlain(SeqModel1, &Form::SeqModel1, [this] { SeqModel1_TextChange(form_); });
  bindPlain(SeqModel2, &Form::SeqModel2, [this] { SeqModel2_TextChange(form_); });
  for (QPlainTextEdit* seq : {SeqModel1, SeqModel2}) {
    // Typed keys only; a paste is not filtered.
    auto* hook = new EventHook(seq);
    hook->keyDown = [](QKeyEvent* key) {
      // Shortcuts (a paste among them) are no typing.
      if (key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier)) return false;
      const QString text = key->text();
      if (text.size() != 1 || text[0].unicode() > 0xFF) return false;
      return SeqModel_KeyDown(static_cast<char>(text[0].unicode()));
    };
  }
  pushers_.push_back([this] {
    if (PupModel->currentIndex() != form_.PupModelListIndex) {
      QSignalBlocker block(PupModel);
      PupModel->setCurrentIndex(form_.PupModelListIndex);
    }
  });
  bindEnabled(PupModel, &Form::PupModelEnabled);
  connect(PupModel, &QComboBox::activated, this, [this](int index) {
    form_.PupModelListIndex = index;
    edited([this] { PupModel_Change(form_); });
  });
  connect(box("Apply"), &QAbstractButton::clicked, this, [this, &st] { edited([this, &st] { Apply_Action(st, form_); }); });
  bindLabel(lab("messModel"), &Form::messModel);
  for (int i = 0; i < 16; ++i) {
    QLabel* cell = lab(kCellNames[i]);
    pushers_.push_back([this, cell, i] {
      if (cell->text() != toQ(form_.cells[i])) cell->setText(toQ(form_.cells[i]));
    });
  }
  for (int r = 0; r < 4; ++r) {
    QLabel* sum = lab(("Somme_" + std::to_string(r + 1)).c_str());
    pushers_.push_back([this, sum, r] {
      if (sum->text() != toQ(form_.Somme[r])) sum->setText(toQ(form_.Somme[r]));
    });
  }

  // Results tab
  bindPlain(Results, &Form::Results, {});

  // Graphic tab
  Canvas1->draw = [this](QPainter& painter) { paintCanvas(painter); };
  bindText(line("EFFrom"), &Form::EFFrom);
  lostFocus(line("EFFrom"), [this] { graphHandler(EFFrom_LostFocus); });
  bindText(line("EFTo"), &Form::EFTo);
  lostFocus(line("EFTo"), [this] { graphHandler(EFTo_LostFocus); });
  bindLabel(lab("ST_messGraph"), &Form::ST_messGraph);
  bindEnabled(PBDot, &Form::PBDotEnabled);
  connect(PBDot, &QPushButton::clicked, this, [this] { PBDot_Action(); });

  // Pref tab
  bindText(line("EFHeight"), &Form::EFHeight);
  lostFocus(line("EFHeight"), [this] { sizeHandler(EFHeight_LostFocus); });
  bindText(line("EFwidth"), &Form::EFwidth);
  lostFocus(line("EFwidth"), [this] { sizeHandler(EFwidth_LostFocus); });
  bindCheck(box("CBMovingShort"), &Form::CBMovingShort, [this] { graphHandler(CBMovingShort_Action); });
  bindText(line("EFIdentities"), &Form::EFIdentities);
  bindText(line("EFSD"), &Form::EFSD);
  bindCheck(box("CBMaxIdent"), &Form::CBMaxIdent, [this] { graphHandler(CBMaxIdent_Action); });
  bindRadio(box("CBUsePoint"), &Form::CBUsePoint, [this] { graphHandler(CBUsePoint_Action); });
  bindRadio(box("CBUsePoint1"), &Form::CBUsePoint1, [this] { graphHandler(CBUsePoint1_Action); });
  bindCheck(box("CBSymetrie"), &Form::CBSymetrie, [this] { graphHandler(CBSymetrie_Action); });
  bindEnabled(box("CBSymetrie"), &Form::CBSymetrieEnabled);
  bindRadio(box("CBHOSD"), &Form::CBHOSD, [this] { graphHandler(CBHOSD_Action); });
  bindRadio(box("RadioButton1"), &Form::RadioButton1, [this] { graphHandler(RadioButton1_Action); });
  bindRadio(box("CBFreqIB"), &Form::CBFreqIB, [this] { graphHandler(CBFreqIB_Action); });
  bindRadio(box("CBFreqIB1"), &Form::CBFreqIB1, [this] { graphHandler(CBFreqIB1_Action); });
  bindCheck(box("CBMaxMin"), &Form::CBMaxMin, [this] { graphHandler(CBMaxMin_Action); });
  bindText(line("EF_MinX"), &Form::EF_MinX);
  lostFocus(line("EF_MinX"), [this] { graphHandler(EF_MinX_LostFocus); });
  bindText(line("EF_MaxX"), &Form::EF_MaxX);
  lostFocus(line("EF_MaxX"), [this] { graphHandler(EF_MaxX_LostFocus); });
}

// drawing

void Window1::graphHandler(void (*handler)(ComparisonState&, Form&)) {
  syncCanvasSize();
  handler(*st_, form_);
  Canvas1->update();
}

void Window1::sizeHandler(void (*handler)(ComparisonState&, Form&)) {
  handler(*st_, form_);
  setContentSize(form_.Width, form_.Height);
}

void Window1::syncCanvasSize() {
  form_.Canvas1Width = Canvas1->width();
  form_.Canvas1Height = Canvas1->height();
}

void Window1::graph() {
  syncCanvasSize();
  Graph(*st_, form_);
  dropStalePicture();
  Canvas1->update();
}

void Window1::dropStalePicture() {
  // Graph draws nothing without bases or a window size, and would leave an
  // earlier run's curve standing as if it were this one's.
  if (!st_->pct || (st_->nbbases != 0 && st_->windgraph != 0)) return;
  st_->pct = std::make_shared<plots::Picture>(std::max(1, form_.Canvas1Width), std::max(1, form_.Canvas1Height));
  form_.ST_messGraph = st_->nbbases == 0 ? "No profile to draw: the longest sequence is empty"
                                         : "No profile to draw: the window size of the run is 0";
}

void Window1::paintCanvas(QPainter& painter) {
  // Only the picture that Graph built: painting never draws anew.
  if (st_->pct) plots::paintPicture(painter, *st_->pct);
}

// window size

void Window1::setContentSize(int width, int height) {
  const QSize want(std::clamp(width, 400, 1600), std::clamp(height, 450, 1200));
  if (isVisible() && content_->size() == want) return;
  if (QLayout* l = layout()) l->activate();
  // The window's own size holds the menu bar above the area.
  const QSize chrome = isVisible() ? size() - content_->size() : QSize(0, menuBar()->sizeHint().height());
  resize(want + chrome);
  if (!isVisible()) content_->resize(want);
}

void Window1::resizeEnded() {
  form_.Width = content_->width();
  form_.Height = content_->height();
  syncCanvasSize();
  Event_Resized(*st_, form_);
  Canvas1->update();
  refresh();
}

// File tab

void Window1::openRoute(Route route, const std::optional<std::string>& path) {
  openFile(*st_, form_, route, path, [this] { graph(); });
  refresh();
  QLineEdit* pathField = route == Route::GBLongDrop || route == Route::BevelButton0 ? EditField0 : EditField1;
  pathField->setCursorPosition(static_cast<int>(pathField->text().size()));
}

std::optional<std::string> Window1::askOpenFile() {
  if (openDialog) return openDialog();
  const QString path = QFileDialog::getOpenFileName(this, QString(), QString(), openFilter());
  if (path.isEmpty()) return std::nullopt;
  return fromQ(path);
}

std::optional<std::string> Window1::askSaveFile() {
  if (saveDialog) return saveDialog();
  const QString path = QFileDialog::getSaveFileName(this, QString(), QStringLiteral("Output.txt"), openFilter());
  if (path.isEmpty()) return std::nullopt;
  return fromQ(path);
}

void Window1::BevelButton0_Action() { openRoute(Route::BevelButton0, askOpenFile()); }
void Window1::BevelButton1_Action() { openRoute(Route::BevelButton1, askOpenFile()); }
void Window1::GBLong_DropObject(const QString& path) { openRoute(Route::GBLongDrop, fromQ(path)); }
void Window1::GBShort_DropObject(const QString& path) { openRoute(Route::GBShortDrop, fromQ(path)); }

// runs

void Window1::repaintNow(QWidget* w) { w->repaint(); }

void Window1::PBRUN_Action() {
  if (equalsNoCase(form_.PBRUNCaption, "Stop")) {
    st_->askclose = true;
    runMessage("Stopping...");
    return;
  }
  startRun();
}

bool Window1::listingWarningAccepted() {
  if (form_.CBCPG) return true;
  const RunSettings settings = RunSettings::fromForm(form_);
  const ListingEstimate e = estimateListing(*st_, settings);
  const double limit = static_cast<double>(runTextLimit());
  if (!e.mostPairs() && e.bytes < limit / 2) return true;
  std::string text = "With a window of " + Str(e.W) + " bases a random pair of windows scores about " +
                     Format(e.randomScore, "0.#") + ", and the listing takes every pair that scores " +
                     form_.EFIdentities + " or more: it would hold about " + Format(100.0 * e.share, "0.#") +
                     " % of the " + Str(e.pairs) + " window pairs, about " +
                     bytesText(static_cast<uint64_t>(e.bytes)) + " of alignments";
  if (e.bytes >= limit) text += ", more than this machine's memory allows (" + bytesText(static_cast<uint64_t>(limit)) + ")";
  text += ". Raise \"Display alignements with more than\" on the Pref tab, or narrow the analysis range.";
  if (confirmRun) return confirmRun(text);
  QMessageBox box(QMessageBox::Warning, QStringLiteral("Trelvane comparison"), toQ(text), QMessageBox::NoButton, this);
  box.setObjectName(QStringLiteral("ListingWarning"));
  QPushButton* run = box.addButton(QStringLiteral("Run anyway"), QMessageBox::AcceptRole);
  box.addButton(QMessageBox::Cancel);
  box.setDefaultButton(QMessageBox::Cancel);
  box.exec();
  return box.clickedButton() == run;
}

void Window1::startRun() {
  if (!listingWarningAccepted()) return;
  form_.TabPanel1Enabled = false;
  form_.PBRUNEnabled = true;
  form_.PBRUNCaption = "Stop";
  refresh();
  repaintNow(PBRUN);
  st_->askclose = false;
  st_->running = true;

  // Everything the run reads is taken here, on the main thread.
  RunSettings settings = RunSettings::fromForm(form_);
  if (form_.CBFile) settings.resultPath = askSaveFile();
  settingsResultPath_ = settings.resultPath;
  runWasCpg_ = settings.CBCPG;
  settings.seed = runSeed ? runSeed() : Rnd::clockSeed();
  settings.progressWidth = ProgressBar1->width();
  settings.textLimit = textLimit ? textLimit : runTextLimit();

  auto host = std::make_shared<QtRunHost>(this, workerYield);
  auto body = [st = st_, settings, host] {
    RunOutcome outcome;
    try {
      outcome = rumcompute(*st, settings, *host);
    } catch (const std::bad_alloc&) {
      // its set-up out of memory: the run ends, not the program
      outcome = RunOutcome{};
      outcome.stopped = true;
      outcome.failure = outOfMemoryText(settings);
    }
    // What Results shows is cut here, off the main thread.
    outcome.report = reportShown(std::move(outcome.report), outcome.listingEnd, kResultsShown);
    auto shared = std::make_shared<RunOutcome>(std::move(outcome));
    host->post([shared, host](Window1& w) { w.runEnded(*shared); });
  };
  try {
    runthreads::start(std::move(body));
  } catch (const std::exception& e) {
    // No thread to be had (or no memory for one): the run ends before it began.
    RunOutcome none;
    none.stopped = true;
    none.failure = std::string("The run could not start: ") + e.what();
    runEnded(none);
  }
}

void Window1::runMessage(const std::string& text) {
  form_.Message = text;
  refresh();
  repaintNow(Message);
  if (messageShown) messageShown(text);
}

void Window1::runProgress(int value, int maximum) {
  form_.ProgressBar1Maximum = maximum;
  form_.ProgressBar1Value = value;
  refresh();
}

void Window1::runSetEFAnaTo(const std::string& text) {
  if (form_.EFAnaTo == text) return;
  form_.EFAnaTo = text;
  EFAnaTo_TextChange(*st_, form_);
  refresh();
}

void Window1::runEnded(const RunOutcome& outcome) {
  QtRunHost host(this, {});
  endOfRun(*st_, form_, outcome, host, [this] { graph(); });
  if (!outcome.failure.empty()) appendResultsLine(outcome.failure);
  if (!outcome.resultError.empty() && settingsResultPath_) {
    // The report still says "Result is saved": the check box was on.
    const std::string why = "The result file " + *settingsResultPath_ + " was not written: " + outcome.resultError;
    form_.Message = why;
    appendResultsLine(why);
  }
  // A finished scan leaves the bar full; CpG fills its hundred pixels only.
  if (!outcome.stopped && !outcome.refused && !runWasCpg_) form_.ProgressBar1Value = form_.ProgressBar1Maximum;
  // Event_Run: the caption, the panel, the run state
  form_.PBRUNCaption = "Run";
  form_.TabPanel1Enabled = true;
  refresh();
  repaintNow(TabPanel1);
  st_->askclose = false;
  st_->running = false;
}

void Window1::appendResultsLine(const std::string& line) {
  form_.Results += line;
  form_.Results += '\n';
}

// Graphic tab

void Window1::PBDot_Action() {
  // The new window repairs EFTo and EFFrom as it reads the range.
  auto* dot = new DotWindow(this);
  refresh();
  dot->show();
}

// menus and window events

namespace {

// The picture as the clipboard offers it: an image, PNG bytes and SVG text.
QMimeData* pictureMimeData(const plots::Picture& pct) {
  auto* mime = new QMimeData;
  QImage image(std::max(1, pct.width), std::max(1, pct.height), QImage::Format_ARGB32);
  image.fill(Qt::white);
  {
    QPainter painter(&image);
    plots::paintPicture(painter, pct);
  }
  mime->setImageData(image);
  QByteArray png;
  QBuffer pngBuffer(&png);
  pngBuffer.open(QIODevice::WriteOnly);
  image.save(&pngBuffer, "PNG");
  mime->setData(QStringLiteral("image/png"), png);

  QByteArray svg;
  QBuffer svgBuffer(&svg);
  QSvgGenerator generator;
  generator.setOutputDevice(&svgBuffer);
  generator.setSize(QSize(pct.width, pct.height));
  generator.setViewBox(QRect(0, 0, pct.width, pct.height));
  {
    QPainter painter(&generator);
    plots::paintPicture(painter, pct);
  }
  mime->setData(QStringLiteral("image/svg+xml"), svg);
  return mime;
}

}  // namespace

void Window1::EditCopy_Action() {
  if (form_.TabPanel1Value != 3) return;
  // With no picture drawn yet the clipboard gets an empty one: no guard.
  QGuiApplication::clipboard()->setMimeData(st_->pct ? pictureMimeData(*st_->pct) : new QMimeData);
}

void Window1::FileClose_Action() { close(); }

void Window1::closeEvent(QCloseEvent* event) {
  // Event_Close: a run still going is asked to stop; the closing is not held back.
  if (st_->running) st_->askclose = true;
  event->accept();
}

void Window1::keyPressEvent(QKeyEvent* event) {
  // PBRUN is the default button: Return or Enter that no field took presses it.
  if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && PBRUN->isVisible() &&
      PBRUN->isEnabled()) {
    PBRUN->click();
    return;
  }
  QMainWindow::keyPressEvent(event);
}

}  // namespace trelvane::shell
