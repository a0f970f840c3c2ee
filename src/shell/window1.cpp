// window1.cpp -- Window1: its tabs put together, its size, its runs, its menus and events.
#include "shell/window1.h"

#include <QAbstractButton>
#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFontDatabase>
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
#include <QTabWidget>
#include <QTimer>

#include "engine/listing_estimate.h"
#include "engine/run.h"
#include "platform/memory.h"
#include "platform/numtext.h"
#include "platform/rnd.h"
#include "plots/graph.h"
#include "plots/graph_controls.h"
#include "plots/picture_qt.h"
#include "shell/anchors.h"
#include "shell/app.h"
#include "shell/controls.h"
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

Window1::Window1(QWidget* parent)
    : QMainWindow(parent), st_(std::make_shared<ComparisonState>()), bind_(this, form_) {
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
  make_ = Controls(anchors_);
  build();
  buildMenuBar1(menuBar(), this);
  // The window itself, menu bar included, keeps the limits of its area:
  // without them a maximised window grows past what EFwidth and EFHeight
  // can say.
  const QSize menu(0, menuBar()->sizeHint().height());
  setMinimumSize(content_->minimumSize() + menu);
  setMaximumSize(content_->maximumSize() + menu);

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

void Window1::build() {
  QFont base = content_->font();
  if (QFontDatabase::families().contains(QStringLiteral("Liberation Sans")))
    base.setFamily(QStringLiteral("Liberation Sans"));
  // The controls' sizes are those of the system font at 12 points of 72 dpi.
  base.setPixelSize(12);
  content_->setFont(base);

  TabPanel1 = make_.add(new QTabWidget(content_), "TabPanel1", 8, 4, 383, 430, L | T | R | B);
  const char* tabs[5] = {"File", "Model", "Results", "Graphic", "Pref"};
  QWidget* pages[5];
  for (int i = 0; i < 5; ++i) {
    pages[i] = new QWidget;
    pages[i]->setObjectName(QStringLiteral("TabPanel1_page%1").arg(i + 1));
    TabPanel1->addTab(pages[i], QString::fromLatin1(tabs[i]));
  }
  // PBRUN and ProgressBar1 belong to the window itself, not to the panel:
  // they stay usable while a run keeps the panel disabled.
  PBRUN = make_.add(new QPushButton(QStringLiteral("Run"), content_), "PBRUN", 311, 403, 69, 20, R | B);
  PBRUN->setEnabled(false);
  PBRUN->setDefault(true);
  ProgressBar1 = make_.add(new QProgressBar(content_), "ProgressBar1", 22, 411, 262, 12, L | R | B);
  ProgressBar1->setRange(0, 100);
  ProgressBar1->setValue(0);
  ProgressBar1->setTextVisible(false);
  buildFileTab(pages[0]);
  buildModelTab(pages[1]);
  buildResultsTab(pages[2]);
  buildGraphicTab(pages[3]);
  buildPrefTab(pages[4]);

  // what the window shows of a run, and the tab panel
  bind_.push([this] {
    if (PBRUN->text() != toQ(form_.PBRUNCaption)) PBRUN->setText(toQ(form_.PBRUNCaption));
    if (ProgressBar1->maximum() != form_.ProgressBar1Maximum) ProgressBar1->setMaximum(form_.ProgressBar1Maximum);
    if (ProgressBar1->value() != form_.ProgressBar1Value) ProgressBar1->setValue(form_.ProgressBar1Value);
    if (TabPanel1->currentIndex() != form_.TabPanel1Value) {
      QSignalBlocker block(TabPanel1);
      TabPanel1->setCurrentIndex(form_.TabPanel1Value);
    }
  });
  bind_.enabled(PBRUN, &Form::PBRUNEnabled);
  bind_.visible(PBRUN, &Form::PBRUNVisible);
  bind_.visible(ProgressBar1, &Form::ProgressBar1Visible);
  bind_.enabled(TabPanel1, &Form::TabPanel1Enabled);
  connect(PBRUN, &QPushButton::clicked, this, [this] { PBRUN_Action(); });
  connect(TabPanel1, &QTabWidget::currentChanged, this, [this](int v) {
    form_.TabPanel1Value = v;
    syncCanvasSize();
    bind_.edited([this] {
      TabPanel1_Change(*st_, form_);
      dropStalePicture();
      Canvas1->update();
    });
  });
}

void Window1::refresh() { bind_.refresh(); }

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

// the Save dialog

std::optional<std::string> Window1::askSaveFile() {
  if (saveDialog) return saveDialog();
  const QString path = QFileDialog::getSaveFileName(this, QString(), QStringLiteral("Output.txt"), openFilter());
  if (path.isEmpty()) return std::nullopt;
  return fromQ(path);
}

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

// menus and window events

namespace {

// The picture as the clipboard offers it: an image, PNG bytes and SVG text,
// made by the writer of the CLI's files with the same settings.
QMimeData* pictureMimeData(const plots::Picture& pct) {
  auto* mime = new QMimeData;
  mime->setImageData(plots::pictureImage(pct));
  for (auto [format, type] : {std::pair{plots::ImageFormat::Png, "image/png"},
                              std::pair{plots::ImageFormat::Svg, "image/svg+xml"}}) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (plots::writePictureTo(pct, format, buffer)) mime->setData(QString::fromLatin1(type), bytes);
  }
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