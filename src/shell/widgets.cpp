// widgets.cpp -- drop boxes, field rules, canvases and the matrix grid.
#include "shell/widgets.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QResizeEvent>
#include <QFileInfo>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMimeDatabase>
#include <QPainter>
#include <QHelpEvent>
#include <QToolTip>
#include <QUrl>

#include <algorithm>

#include "shell/app.h"

namespace trelvane::shell {

QString toQ(const std::string& text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string fromQ(const QString& text) { return text.toStdString(); }

// field rules

FieldValidator::FieldValidator(int maskDigits, int limitText, QObject* parent)
    : QValidator(parent), digits_(maskDigits), limit_(limitText) {}

QValidator::State FieldValidator::validate(QString& input, int& /*pos*/) const {
  if (digits_ > 0) {
    if (input.size() > digits_) return Invalid;
    for (QChar c : input)
      if (c < QLatin1Char('0') || c > QLatin1Char('9')) return Invalid;
  }
  if (limit_ > 0 && input.size() > limit_) return Invalid;
  return Acceptable;
}

// drop boxes

QString elided(const QWidget* w, const QString& text, int width) {
  return w->fontMetrics().elidedText(text, Qt::ElideRight, std::max(0, width));
}

void showElided(QWidget* w, const QString& full, int width, const std::function<void(const QString&)>& show) {
  const QString shown = elided(w, full, width);
  show(shown);
  w->setToolTip(shown == full ? QString() : full);
}

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : QLabel(parent) { setFullText(text); }

void ElidedLabel::setFullText(const QString& text) {
  full_ = text;
  fit();
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
  QLabel::resizeEvent(event);
  fit();
}

void ElidedLabel::fit() { showElided(this, full_, contentsRect().width(), [this](const QString& t) { setText(t); }); }

DropBox::DropBox(const QString& title, QWidget* parent) : QGroupBox(title, parent), full_(title) {
  setAcceptDrops(true);
}

void DropBox::setFullTitle(const QString& title) {
  full_ = title;
  fit();
}

void DropBox::resizeEvent(QResizeEvent* event) {
  QGroupBox::resizeEvent(event);
  fit();
}

void DropBox::fit() {
  // The title stands over the frame, a few pixels in from either side.
  showElided(this, full_, width() - 16, [this](const QString& t) { setTitle(t); });
}

std::optional<QString> DropBox::droppedFile(const QMimeData* mime) {
  if (!mime || !mime->hasUrls() || mime->urls().isEmpty()) return std::nullopt;
  const QUrl first = mime->urls().first();
  if (!first.isLocalFile()) return std::nullopt;
  const QString path = first.toLocalFile();
  const QFileInfo info(path);
  if (!info.isFile()) return std::nullopt;
  // The group boxes take the file type table's files: a name of the table
  // (a sequence or result file, whatever its bytes), or any plain text, an
  // empty file.
  const QString name = info.fileName();
  for (const QString& e : fileTypeExtensions())
    if (name.endsWith(e, Qt::CaseInsensitive)) return path;
  const QMimeType type = QMimeDatabase().mimeTypeForFile(info);
  if (info.size() == 0 || type.inherits(QStringLiteral("text/plain"))) return path;
  return std::nullopt;
}

void DropBox::dragEnterEvent(QDragEnterEvent* event) {
  if (droppedFile(event->mimeData())) event->acceptProposedAction();
  else event->ignore();
}

void DropBox::dragMoveEvent(QDragMoveEvent* event) {
  if (droppedFile(event->mimeData())) event->acceptProposedAction();
  else event->ignore();
}

void DropBox::dropEvent(QDropEvent* event) {
  const auto path = droppedFile(event->mimeData());
  if (!path) {
    event->ignore();
    return;
  }
  event->acceptProposedAction();
  if (onDrop) onDrop(*path);
}

// canvases

PictureCanvas::PictureCanvas(QWidget* parent) : QWidget(parent) {
  setAutoFillBackground(true);
  QPalette p = palette();
  p.setColor(QPalette::Window, Qt::white);
  setPalette(p);
}

void PictureCanvas::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  if (draw) draw(painter);
}

bool PictureCanvas::event(QEvent* e) {
  if (e->type() != QEvent::ToolTip || !tip) return QWidget::event(e);
  auto* help = static_cast<QHelpEvent*>(e);
  const QString text = tip(help->pos());
  if (text.isEmpty()) QToolTip::hideText();
  else QToolTip::showText(help->globalPos(), text, this);
  return true;
}

// matrix grid

std::array<ModelGrid::Cell, 16> ModelGrid::cells() {
  // Chemical class of A, T, C, G: purines A and G, pyrimidines T and C.
  static constexpr int kPurine[4] = {1, 0, 0, 1};
  std::array<Cell, 16> out;
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) {
      const bool sameClass = kPurine[r] == kPurine[c];
      out[4 * r + c] = {QRect(80 + 58 * c, 110 + 38 * r, 46, 26),
                        sameClass ? QColor(255, 255, 0) : QColor(0, 255, 0)};
    }
  return out;
}

QRect ModelGrid::bounds() {
  QRect all;
  for (const Cell& c : cells()) all = all.united(c.rect);
  return all;
}

ModelGrid::ModelGrid(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void ModelGrid::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(Qt::black, 1));
  const QPoint origin = bounds().topLeft();
  for (const Cell& c : cells()) {
    painter.setBrush(c.fill);
    // OvalWidth and OvalHeight 16: corner radii of 8.
    painter.drawRoundedRect(QRectF(c.rect.translated(-origin)).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
  }
}

// event hooks

EventHook::EventHook(QWidget* target) : QObject(target) { target->installEventFilter(this); }

bool EventHook::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && keyDown) {
    if (keyDown(static_cast<QKeyEvent*>(event))) return true;
  } else if (event->type() == QEvent::FocusOut && lostFocus) {
    // The field keeps its focus when only the window or a popup takes it.
    const auto reason = static_cast<QFocusEvent*>(event)->reason();
    if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) lostFocus();
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace trelvane::shell
